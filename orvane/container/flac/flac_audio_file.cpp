#include "orvane/container/flac/flac_audio_file.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/flac/flac_stream.h"
#include "orvane/platform/error.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/progress.h"

namespace orvane {
namespace {

constexpr FourCC kFLAC = fourCCFrom("flac");

/// As RFC 9639, 9.1.3, orders one to eight channels: the masks of a WAVE file.
constexpr std::uint32_t kMaskOfCount[] = {0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};

constexpr std::size_t kFramesBetweenReports = 65536;

/// Frames that are worth a decoder of their own, which has to find its place.
constexpr std::size_t kFewestFramesOfPart = std::size_t{1} << 17;
/// Several parts for each thread end together even though others, like those that measure, take
/// their time from the same processors.
constexpr std::size_t kMostPartsPerThread = 2;

class FLACAudioFile final : public AudioFile {
 public:
  FLACAudioFile(std::shared_ptr<const InputFile> file, const AudioFileOpenOptions& options,
                FLACModule::OpenByFFmpeg openByFFmpeg)
      : AudioFile(std::move(file)),
        options_(options),
        openByFFmpeg_(openByFFmpeg),
        isShared_(options.execution.threadCount > 1 && !options.verifiesChecksum) {
    streams_.push_back(makeStream());
  }

  /// Reads up to the first block; false when there is none.
  bool begin();

  const AudioFileDescription& description() const noexcept override { return description_; }
  std::int64_t frameLength() override;
  bool knowsFrameLength() const noexcept override { return countedFrames_.has_value(); }
  std::optional<std::int64_t> expectedFrameLength() const override;
  std::vector<std::string> tagNames() const override { return byFFmpeg()->tagNames(); }
  void read(PCMBuffer& buffer) override;
  std::optional<bool> checksumHolds() const noexcept override { return checksumHolds_; }

 private:
  std::vector<ChapterMark> unsortedChapters() const override { return byFFmpeg()->chapters(); }

  /// The same file for what stands beside the audio, which is seldom asked for.
  std::unique_ptr<AudioFile> byFFmpeg() const { return openByFFmpeg_(sharedFile(), {}, kFLAC); }
  std::unique_ptr<FLACStream> makeStream() const {
    return std::make_unique<FLACStream>(sharedFile(), options_.execution.observer,
                                        options_.verifiesChecksum);
  }
  std::size_t partsOf(std::size_t frames) const;
  std::size_t readShared(MutablePlanarView room, std::size_t partCount);
  struct Part;
  void readPart(std::size_t index, std::int64_t start, Part& part);
  void tellOfEnd();
  void reportProgress();
  void warn(AudioFileWarning::Code code, const char* text);

  AudioFileOpenOptions options_;
  FLACModule::OpenByFFmpeg openByFFmpeg_;
  /// The first has come to where the next frames are; the others read ahead.
  std::vector<std::unique_ptr<FLACStream>> streams_{};
  bool isShared_;  ///< among several threads
  FLACStreamInfo info_{};
  AudioFileDescription description_{};
  std::optional<std::int64_t> countedFrames_{};
  std::optional<bool> checksumHolds_{};
  std::int64_t position_ = 0;
  bool hasToldOfEnd_ = false;
};

bool FLACAudioFile::begin() {
  const auto info = streams_.front()->begin();
  if (!info) return false;
  info_ = *info;
  const std::uint32_t channels = info_.channelCount;
  StreamDescription& format = description_.dataFormat;
  format.formatID = kFLAC;
  format.sampleRate = info_.sampleRate;
  format.channelsPerFrame = channels;
  const auto stated =
      info_.channelMask ? ChannelLayout::fromWaveMask(*info_.channelMask, channels) : std::nullopt;
  const bool isStated =
      stated && std::ranges::find(stated->labels, ChannelLabel::unknown) == stated->labels.end();
  description_.layout =
      isStated ? stated : ChannelLayout::fromWaveMask(kMaskOfCount[channels - 1], channels);
  description_.fileTypeID = kFLAC;
  description_.sourceBitDepth = static_cast<int>(info_.bitsPerSample);
  return true;
}

std::int64_t FLACAudioFile::frameLength() {
  if (!countedFrames_) {
    // What a header states may be wrong, and lost blocks are not to be seen from outside.
    FLACDecoder decoder(sharedFile(), options_.execution.observer);
    std::int64_t frames = 0;
    if (decoder.readInfo())
      while (decoder.next([&](const FLACDecoder::Block& block) {
        frames += static_cast<std::int64_t>(block.frameCount);
      })) {
      }
    countedFrames_ = frames;
  }
  return *countedFrames_;
}

std::optional<std::int64_t> FLACAudioFile::expectedFrameLength() const {
  if (countedFrames_) return countedFrames_;
  return info_.frameCount > 0 ? std::optional(info_.frameCount) : std::nullopt;
}

void FLACAudioFile::read(PCMBuffer& buffer) {
  precondition(buffer.channelCount() == info_.channelCount,
               "a buffer to read into must have the file's channel count");
  const MutablePlanarView room = buffer.room();
  const std::size_t parts = partsOf(room.frameCount());
  std::size_t filled = 0;
  if (parts > 1) {
    filled = readShared(room, parts);
  } else {
    for (std::size_t count = 1; count > 0 && filled < room.frameCount(); filled += count) {
      count = streams_.front()->read(
          room.from(filled).slice(0, std::min(kFramesBetweenReports, room.frameCount() - filled)));
      position_ += static_cast<std::int64_t>(count);
      reportProgress();
    }
  }
  buffer.setFrameLength(static_cast<std::uint32_t>(filled));
  if (streams_.front()->hasEnded() && !std::exchange(hasToldOfEnd_, true)) tellOfEnd();
}

/// Among how many decoders so many frames are shared out; the last ones of a file are not.
std::size_t FLACAudioFile::partsOf(std::size_t frames) const {
  if (!isShared_ || position_ + static_cast<std::int64_t>(frames) >= info_.frameCount) return 1;
  return std::clamp<std::size_t>(frames / kFewestFramesOfPart, 1,
                                 kMostPartsPerThread * options_.execution.threadCount);
}

/// What one of several decoders that read at once gives.
struct FLACAudioFile::Part {
  MutablePlanarView room{};
  std::size_t frames = 0;
  std::uint64_t firstBlockEnd = 0;  ///< in the file
};

/// All parts at once. They are joined only where the decoder of one, which has just come to its
/// end, goes on with the very block that the next one begins with, and nothing but sound blocks was
/// met; else the decoder of the last one that counts decodes the rest, and all that follows.
std::size_t FLACAudioFile::readShared(MutablePlanarView room, std::size_t partCount) {
  const std::size_t length = room.frameCount() / partCount;
  if (streams_.size() < partCount) streams_.resize(partCount);
  std::vector<Part> parts(partCount);
  parallelFor(options_.execution.threadCount, partCount, [&](std::size_t i) {
    const std::size_t start = i * length;
    parts[i].room = i + 1 < partCount ? room.slice(start, length) : room.from(start);
    readPart(i, position_ + static_cast<std::int64_t>(start), parts[i]);
  });
  const auto isSound = [&](std::size_t i) {
    return parts[i].frames == parts[i].room.frameCount() && !streams_[i]->hasEnded() &&
           !streams_[i]->decoder().hasMetFaults();
  };
  // A file that is there twice has two blocks of every number.
  const auto goesOn = [&](std::size_t i) {
    return streams_[i]->decoder().blockEnd() == parts[i + 1].firstBlockEnd &&
           streams_[i]->goesOnWith(parts[i + 1].room);
  };
  std::size_t valid = 1;
  while (valid < partCount && isSound(valid - 1) && isSound(valid) && goesOn(valid - 1)) ++valid;
  std::size_t frames = (valid - 1) * length + parts[valid - 1].frames;
  std::swap(streams_.front(), streams_[valid - 1]);
  isShared_ = valid == partCount;
  if (!isShared_) {
    streams_.resize(1);
    frames += streams_.front()->read(room.from(frames));
  }
  position_ += static_cast<std::int64_t>(frames);
  reportProgress();
  return frames;
}

void FLACAudioFile::readPart(std::size_t index, std::int64_t start, Part& part) {
  auto& stream = streams_[index];
  if (!stream) {
    stream = makeStream();
    if (!stream->begin()) return;
  }
  if (index > 0 && !stream->seek(start)) return;
  part.firstBlockEnd = stream->decoder().blockEnd();
  part.frames = stream->read(part.room);
}

void FLACAudioFile::tellOfEnd() {
  FLACDecoder& decoder = streams_.front()->decoder();
  if (decoder.hasMetDamage())
    warn(AudioFileWarning::Code::damagedAudio,
         "Parts of the audio are damaged and could not be decoded; they are left out.");
  if (decoder.breaksOff() || (!decoder.hasMetDamage() && position_ < info_.frameCount))
    warn(AudioFileWarning::Code::truncatedAudio,
         "The file ends before its audio does; what is there is used.");
  if (options_.verifiesChecksum && info_.statesMD5) checksumHolds_ = decoder.finishMD5();
}

void FLACAudioFile::reportProgress() {
  ProgressObserver* const observer = options_.execution.observer;
  if (observer == nullptr) return;
  if (observer->isCancelled()) throw Cancelled();
  observer->onProgress(
      "Reading", streams_.front()->hasEnded() ? 1.0 : streams_.front()->decoder().shareRead());
}

void FLACAudioFile::warn(AudioFileWarning::Code code, const char* text) {
  description_.warnings.push_back({code, text});
}

}  // namespace

std::unique_ptr<AudioFile> openFLACFile(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options,
                                        FLACModule::OpenByFFmpeg openByFFmpeg) {
  auto opened = std::make_unique<FLACAudioFile>(std::move(file), options, openByFFmpeg);
  return opened->begin() ? std::move(opened) : nullptr;
}

}  // namespace orvane
