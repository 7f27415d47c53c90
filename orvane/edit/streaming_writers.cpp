#include "orvane/edit/streaming_writers.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "orvane/container/pcm_file_writer.h"
#include "orvane/core/channel_order.h"
#include "orvane/core/decibels.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/core/peak/true_peak_meter.h"
#include "orvane/edit/level.h"
#include "orvane/edit/mapped_frames.h"
#include "orvane/edit/pcm_write_settings.h"
#include "orvane/edit/peak_normalization.h"
#include "orvane/edit/trim_cut.h"
#include "orvane/platform/sample_arithmetic.h"

namespace orvane::EditOperations {
namespace {

using Case = EditStreamError::Case;

std::int64_t framesOf(const PCMBuffer& source) {
  return source.frameLength();
}

FrameRange allOf(const PCMBuffer& source) {
  return {0, framesOf(source)};
}

void require(bool isValid) {
  if (!isValid) throw EditStreamError(Case::invalidRange);
}

void requireAudio(const PCMBuffer& source) {
  require(source.frameLength() > 0 && source.channelCount() > 0);
}

/// Writes `frameCount` frames, of which `fill` makes one slice after the other.
template <class Fill>
void writeInChunks(const AudioFormat& format, std::int64_t frameCount,
                   const std::filesystem::path& url, std::int64_t chunkFrames, Fill fill) {
  constexpr std::int64_t kLargestBuffer = std::numeric_limits<std::uint32_t>::max();
  const std::int64_t capacity = std::min({frameCount, chunkFrames, kLargestBuffer});
  const auto chunk =
      capacity < 1 ? nullptr : PCMBuffer::make(format, static_cast<std::uint32_t>(capacity));
  if (!chunk) throw EditStreamError(Case::allocationFailed);
  PCMFileWriter writer(
      url, PCMWriteSettings::make(AudioContainer::wave, format, PCMEncoding::float32), frameCount);
  for (std::int64_t first = 0; first < frameCount; first += capacity) {
    chunk->setFrameLength(static_cast<std::uint32_t>(std::min(capacity, frameCount - first)));
    fill(ProgrammeSlice{chunk->room().slice(0, chunk->frameLength()), first});
    writer.write(chunk->view());
  }
  writer.commit();
}

void writeMapped(const PCMBuffer& source, const FrameMap& map, const std::filesystem::path& url,
                 std::int64_t chunkFrames) {
  writeInChunks(source.format(), map.frameCount, url, chunkFrames,
                [&](const ProgrammeSlice& slice) {
                  renderMappedFrames(map, source.view(), slice.firstFrame, slice.audio);
                });
}

/// Writes the whole source after an edit that moves no frames.
template <class Edit>
void writeEdited(const PCMBuffer& source, const std::filesystem::path& url,
                 std::int64_t chunkFrames, Edit edit) {
  const FrameMap map = FrameMap::identity(framesOf(source));
  writeInChunks(source.format(), map.frameCount, url, chunkFrames,
                [&](const ProgrammeSlice& slice) {
                  renderMappedFrames(map, source.view(), slice.firstFrame, slice.audio);
                  edit(slice);
                });
}

double truePeak(const PCMBuffer& source) {
  core::TruePeakMeter meter(source.sampleRate(), source.channelCount());
  meter.process(source.view());
  meter.flush();
  return std::ranges::max(meter.peaks());
}

double integratedLUFS(const PCMBuffer& source) {
  core::LoudnessProcessor meter(source.sampleRate(), source.channelCount(), std::nullopt,
                                core::ChannelOrder::bs1770Weights(source));
  meter.process(source.view());
  meter.flushPartialBlock();
  return meter.integratedLUFS();
}

/// Writes the source with that gain, or with less as the ceiling demands.
void writeBelowCeiling(const PCMBuffer& source, double gainDB, double ceilingDB,
                       const std::filesystem::path& url, std::int64_t chunkFrames) {
  const float gain = linearGain(std::min(gainDB, ceilingDB - core::linearToDB(truePeak(source))));
  writeEdited(source, url, chunkFrames, [&](const ProgrammeSlice& slice) {
    for (std::size_t c = 0; c < slice.audio.channelCount(); ++c) {
      const auto samples = slice.audio.samples(c);
      SampleArithmetic::silenceNonFinite(samples);
      SampleArithmetic::scale(samples, gain);
    }
  });
}

std::string descriptionOf(Case errorCase) {
  return errorCase == Case::invalidRange ? "The requested range is empty or outside the audio."
                                         : "Could not allocate a chunk buffer.";
}

}  // namespace

EditStreamError::EditStreamError(Case errorCase)
    : Error(descriptionOf(errorCase)), case_(errorCase) {}
EditStreamError::~EditStreamError() = default;

void writeTrimmedWAV(const PCMBuffer& source, std::int64_t startFrame, std::int64_t endFrame,
                     const std::filesystem::path& url, std::int64_t chunkFrames) {
  requireAudio(source);
  require(!FrameRange{startFrame, endFrame}.clamped(framesOf(source)).isEmpty());
  writeMapped(source, trimMap(framesOf(source), startFrame, endFrame), url, chunkFrames);
}

void writeCutWAV(const PCMBuffer& source, std::int64_t startFrame, std::int64_t endFrame,
                 std::int64_t crossfadeFrames, const std::filesystem::path& url,
                 std::int64_t chunkFrames) {
  requireAudio(source);
  const auto cut = FrameRange{startFrame, endFrame}.clamped(framesOf(source));
  require(!cut.isEmpty() && cut != allOf(source));
  writeMapped(source, cutMap(framesOf(source), startFrame, endFrame, crossfadeFrames), url,
              chunkFrames);
}

void writeSilenceWAV(const PCMBuffer& source, std::int64_t startFrame, std::int64_t endFrame,
                     SilenceMode mode, std::int64_t durationFrames,
                     const std::filesystem::path& url, std::int64_t chunkFrames) {
  requireAudio(source);
  if (mode != SilenceMode::replace)
    return writeMapped(source,
                       silenceMap(framesOf(source), startFrame, endFrame, mode, durationFrames),
                       url, chunkFrames);
  const auto range = FrameRange{startFrame, endFrame}.clamped(framesOf(source));
  require(!range.isEmpty());
  writeEdited(source, url, chunkFrames,
              [&](const ProgrammeSlice& slice) { silenceSlice(slice, range); });
}

void writePeakNormalizedWAV(const PCMBuffer& source, double targetDB,
                            const std::filesystem::path& url, std::int64_t chunkFrames) {
  requireAudio(source);
  const double gainDB = peakNormalizationGainDB(finitePeak(source.view()), targetDB);
  writeEdited(source, url, chunkFrames, [&](const ProgrammeSlice& slice) {
    changeLevelOfSlice(slice, allOf(source), gainDB);
  });
}

void writeChannelSwappedWAV(const PCMBuffer& source, const std::filesystem::path& url,
                            std::int64_t chunkFrames) {
  requireAudio(source);
  writeEdited(source, url, chunkFrames, [](const ProgrammeSlice& slice) {
    if (slice.audio.channelCount() == 2)
      std::ranges::swap_ranges(slice.audio.samples(0), slice.audio.samples(1));
  });
}

void writeMonoChannelWAV(const PCMBuffer& source, std::int64_t channel,
                         const std::filesystem::path& url, std::int64_t chunkFrames) {
  requireAudio(source);
  require(channel >= 0 && channel < source.channelCount());
  const AudioFormat format{.sampleRate = source.sampleRate(), .channelCount = 1};
  const auto samples = source.view().channels(static_cast<std::size_t>(channel), 1);
  writeInChunks(format, framesOf(source), url, chunkFrames, [&](const ProgrammeSlice& slice) {
    std::copy_n(samples.channel(0) + slice.firstFrame, slice.audio.frameCount(),
                slice.audio.channel(0));
  });
}

void writeNormalizedWAV(const PCMBuffer& source, double targetLUFS, double ceilingDB,
                        const std::filesystem::path& url, std::int64_t chunkFrames) {
  requireAudio(source);
  const double measured = integratedLUFS(source);
  writeBelowCeiling(source, std::isfinite(measured) ? targetLUFS - measured : 0, ceilingDB, url,
                    chunkFrames);
}

void writeLimitedWAV(const PCMBuffer& source, double ceilingDBTP, const std::filesystem::path& url,
                     std::int64_t chunkFrames) {
  writeGainLimitedWAV(source, 0, ceilingDBTP, url, chunkFrames);
}

void writeGainLimitedWAV(const PCMBuffer& source, double gainDB, double ceilingDB,
                         const std::filesystem::path& url, std::int64_t chunkFrames) {
  requireAudio(source);
  writeBelowCeiling(source, gainDB, ceilingDB, url, chunkFrames);
}

}  // namespace orvane::EditOperations
