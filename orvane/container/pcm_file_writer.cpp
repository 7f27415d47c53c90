#include "orvane/container/pcm_file_writer.h"

#include <algorithm>
#include <cmath>

#include "orvane/container/changed_samples.h"
#include "orvane/container/container_table.h"
#include "orvane/platform/precondition.h"

namespace orvane {
namespace {

/// Bytes that are converted and written at a time: they stay in the second-level cache.
constexpr std::size_t kPieceBytes = std::size_t{1} << 19;

/// What every container demands of its audio.
void requireSense(const PCMFileSpecification& specification) {
  const PCMEncoding& encoding = specification.encoding;
  const bool hasSample = encoding.isFloat ? encoding.bitDepth == 32 || encoding.bitDepth == 64
                                          : encoding.bitDepth >= 1 && encoding.bitDepth <= 32;
  if (!hasSample) throw UnwritableFormat(encoding.label() + " samples cannot be written");
  if (specification.format.channelCount < 1 || specification.format.channelCount > kMaximumChannels)
    throw UnwritableFormat("a file has 1 to " + std::to_string(kMaximumChannels) + " channels");
  const double rate = specification.format.sampleRate;
  if (!(rate > 0) || !std::isfinite(rate)) throw UnwritableFormat("a sample rate is above 0");
}

PCMFileSpecification specificationOf(const AudioFormatSettings& settings, std::int64_t frameCount) {
  const auto container =
      settings.fileTypeID ? audioContainerFromFileTypeID(*settings.fileTypeID) : std::nullopt;
  const auto encoding = PCMEncoding::fromFileFormat(settings);
  precondition(container && encoding && settings.sampleRate && settings.channelCount,
               "a file is written with container, linear PCM, rate and channel count");
  precondition(frameCount >= 0, "a file has no fewer than 0 frames");
  precondition(!settings.layout || static_cast<std::int64_t>(settings.layout->labels.size()) ==
                                       *settings.channelCount,
               "a layout names every channel");
  const std::int64_t channels = std::clamp<std::int64_t>(*settings.channelCount, 0, UINT32_MAX);
  return {.container = *container,
          .encoding = *encoding,
          .format = {.sampleRate = *settings.sampleRate,
                     .channelCount = static_cast<std::uint32_t>(channels),
                     .layout = settings.layout},
          .frameCount = frameCount};
}

}  // namespace

UnwritableFormat::UnwritableFormat(std::string reason) : Error(std::move(reason)) {}
UnwritableFormat::~UnwritableFormat() = default;

PCMFileOutline PCMFileWriter::outline(const std::filesystem::path& target,
                                      const AudioFormatSettings& settings,
                                      std::int64_t frameCount) {
  const PCMFileSpecification specification = specificationOf(settings, frameCount);
  try {
    requireSense(specification);
    return containerKind(orvane::fileTypeID(specification.container))->outline(specification);
  } catch (const UnwritableFormat& reason) {
    throw PlatformError(target, reason.errorDescription());
  }
}

PCMFileWriter::PCMFileWriter(const std::filesystem::path& target,
                             const AudioFormatSettings& settings, std::int64_t frameCount,
                             const Options& options)
    : outline_(outline(target, settings, frameCount)),
      frameCount_(frameCount),
      ditherSeed_(options.ditherSeed),
      file_(target, options.existing) {
  file_.reserve(outline_.head.size() + outline_.audioBytes + outline_.tail.size());
  file_.write(outline_.head);
}

PlanarView PCMFileWriter::inFileOrder(PlanarView audio, std::vector<const float*>& pointers) const {
  precondition(audio.channelCount() == outline_.channelOrder.size(),
               "audio is written with the file's channels");
  precondition(static_cast<std::int64_t>(audio.frameCount()) <= frameCount_ - position_,
               "no more frames are written than the header states");
  for (const std::uint32_t channel : outline_.channelOrder)
    pointers.push_back(audio.channel(channel));
  return {pointers, audio.frameCount()};
}

/// Hands pieces of the audio that stay close to the processor to `write`.
template <class Write>
void PCMFileWriter::inPieces(std::size_t frameCount, Write write) {
  const std::size_t frameBytes = outline_.channelOrder.size() * outline_.sample.bytes;
  const std::size_t pieceFrames = std::max<std::size_t>(kPieceBytes / frameBytes, 1);
  bytes_.resize(std::min(pieceFrames, frameCount) * frameBytes);
  for (std::size_t first = 0; first < frameCount; first += pieceFrames) {
    const std::size_t count = std::min(pieceFrames, frameCount - first);
    write(first, count);
    file_.write(std::span(bytes_).first(count * frameBytes));
    position_ += static_cast<std::int64_t>(count);
  }
}

void PCMFileWriter::write(PlanarView audio) {
  std::vector<const float*> pointers;
  const PlanarView ordered = inFileOrder(audio, pointers);
  inPieces(audio.frameCount(), [&](std::size_t first, std::size_t count) {
    const PlanarView piece = ordered.slice(first, count);
    losses_ += ditherSeed_ ? interleaveDithered(outline_.sample, piece, {*ditherSeed_, position_},
                                                bytes_.data())
                           : interleaveFromFloat(outline_.sample, piece, bytes_.data());
  });
}

void PCMFileWriter::writeChanged(PlanarView audio, PlanarView original) {
  if (!ditherSeed_) return write(audio);
  std::vector<const float*> pointers;
  std::vector<const float*> originalPointers;
  const PlanarView ordered = inFileOrder(audio, pointers);
  const PlanarView before = inFileOrder(original, originalPointers);
  std::vector<std::byte> plain;
  inPieces(audio.frameCount(), [&](std::size_t first, std::size_t count) {
    const PlanarView piece = ordered.slice(first, count);
    const ChangedSamples changes(piece, before.slice(first, count));
    losses_ += interleaveDithered(outline_.sample, changes.changed(), {*ditherSeed_, position_},
                                  bytes_.data());
    plain.resize(bytes_.size());
    interleaveFromFloat(outline_.sample, piece, plain.data());
    changes.copyUnchanged(plain.data(), outline_.sample.bytes, bytes_.data());
  });
}

bool PCMFileWriter::holds(SampleEncoding encoding) const noexcept {
  encoding.isBigEndian = outline_.sample.isBigEndian;
  return encoding == outline_.sample;
}

void PCMFileWriter::writeStored(SampleEncoding encoding, std::span<const std::byte> samples) {
  precondition(holds(encoding), "stored samples have the encoding of the file");
  const std::size_t width = encoding.bytes;
  const std::size_t channels = outline_.channelOrder.size();
  const std::size_t frameBytes = channels * width;
  const auto frames = static_cast<std::int64_t>(samples.size() / frameBytes);
  precondition(samples.size() % frameBytes == 0 && frames <= frameCount_ - position_,
               "no more frames are written than the header states");
  const bool isTurned = encoding.isBigEndian != outline_.sample.isBigEndian;
  bytes_.resize(samples.size());
  for (std::size_t frame = 0; frame < samples.size(); frame += frameBytes)
    for (std::size_t channel = 0; channel < channels; ++channel) {
      const auto sample = samples.subspan(frame + outline_.channelOrder[channel] * width, width);
      const auto to = bytes_.begin() + static_cast<std::ptrdiff_t>(frame + channel * width);
      if (isTurned)
        std::reverse_copy(sample.begin(), sample.end(), to);
      else
        std::copy(sample.begin(), sample.end(), to);
    }
  file_.write(bytes_);
  position_ += frames;
}

void PCMFileWriter::commit() {
  precondition(position_ == frameCount_, "a file has all the frames that its header states");
  file_.write(outline_.tail);
  file_.commit();
}

}  // namespace orvane
