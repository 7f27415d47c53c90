// Audio reaches the meters in two ways, loaded whole or slice by slice while it is read, and the
// figures may not tell which. Both cut at the same frames, because the K-weighting filters
// stretches of a piece side by side and another cut shows in its last bits. Each meter is called by
// one thread at a time and keeps its own state; nobody else touches it until `finish`.

#include "orvane/analysis/programme_measurement.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "orvane/audio/slice_relay.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/stage_progress.h"

namespace orvane {
namespace {

/// Bytes of audio that a meter takes at a time, between two looks at the observer, and frames at
/// most: three quarters of a minute at 48 kHz. Longer slices measure no faster, and a programme of
/// some minutes would wait longer for its first one.
constexpr std::size_t kSliceBytes = std::size_t{16} << 20;
constexpr std::size_t kLongestSlice = std::size_t{1} << 21;

/// Frames of a slice: the same for streams and loaded audio, so that their figures are the same.
std::size_t sliceFrames(std::size_t channelCount) {
  constexpr std::size_t kUnit = ProgrammeStatisticsMeter::kPieceFrames;
  const std::size_t frames = kSliceBytes / sizeof(float) / std::max<std::size_t>(channelCount, 1);
  return std::clamp(frames / kUnit * kUnit, kUnit, kLongestSlice);
}

/// The same, less where the source is known to be shorter than one. What a header merely promises
/// does not count: another cut would be seen in the last bits of the figures.
std::uint32_t sliceFramesOf(AudioSource& source) {
  const auto most = sliceFrames(source.format().channelCount);
  if (!source.knowsFrameLength()) return static_cast<std::uint32_t>(most);
  return static_cast<std::uint32_t>(
      std::min(most, static_cast<std::size_t>(source.frameLength()) + 1));
}

/// The meters, of which two may run on threads of their own.
class Meters {
 public:
  Meters(const ProgrammeView& programme, bool computeStereoWidth, int bits)
      : loudness_(programme.sampleRate, static_cast<std::uint32_t>(programme.audio.channelCount()),
                  std::nullopt, programme.weights),
        statistics_(programme.sampleRate, programme.audio.channelCount(), computeStereoWidth,
                    bits) {
    loudness_.isRecording = true;
  }

  /// The longest first, so that the other fills the second thread beside it.
  std::vector<SliceTaker> all() {
    return {[this](PlanarView audio) { loudness_.process(audio); },
            [this](PlanarView audio) { measurePieces(audio); }};
  }

  ProgrammeMeasurement finish(std::size_t frameCount) {
    loudness_.flushPartialBlock();
    return {.loudness = std::move(loudness_),
            .statistics = statistics_.finish(),
            .frameCount = frameCount};
  }

 private:
  /// Memory is what these two wait for: the second one finds a piece in the cache.
  void measurePieces(PlanarView audio) {
    while (audio.frameCount() > 0) {
      const std::size_t frames =
          std::min(audio.frameCount(), ProgrammeStatisticsMeter::kPieceFrames);
      statistics_.process(audio.slice(0, frames));
      loudness_.updateTruePeak(audio.slice(0, frames));
      audio = audio.from(frames);
    }
  }

  core::LoudnessProcessor loudness_;
  ProgrammeStatisticsMeter statistics_;
};

}  // namespace

int storedBits(const AudioSource& source) {
  using Encoding = RawPCMFormat::Encoding;
  const auto& raw = source.rawFormat();
  const auto& identity = source.identity();
  const bool isInteger =
      raw ? raw->encoding != Encoding::float32 && raw->encoding != Encoding::float64
          : identity && identity->pcmEncoding && !identity->pcmEncoding->isFloat;
  const std::int64_t bits = isInteger ? source.bitDepth() : source.sourceBitDepth();
  return bits >= 1 && bits <= 32 ? static_cast<int>(bits) : 0;
}

ProgrammeMeasurement measureProgramme(const ProgrammeView& programme, bool computeStereoWidth,
                                      const Execution& execution, int storedBits) {
  Meters meters(programme, computeStereoWidth, storedBits);
  const auto all = meters.all();
  const std::size_t slice = sliceFrames(programme.audio.channelCount());
  const std::size_t frameCount = programme.audio.frameCount();
  StageProgress progress(execution.observer, "Measuring", all.size() * frameCount);
  parallelFor(execution.threadCount, all.size(), [&](std::size_t meter) {
    for (std::size_t first = 0; first < frameCount; first += slice) {
      const std::size_t count = std::min(slice, frameCount - first);
      all[meter](programme.audio.slice(first, count));
      progress.advance(count);
    }
  });
  return meters.finish(frameCount);
}

ProgrammeMeasurement measureProgramme(AudioSource& source, bool computeStereoWidth, bool dualMono,
                                      const Execution& execution, SpeechDetection* speech) {
  const auto form = source.makeBuffer(0);
  Meters meters(ProgrammeView::of(*form, dualMono), computeStereoWidth, storedBits(source));
  auto takers = meters.all();
  if (speech != nullptr)
    takers.emplace_back([&](PlanarView audio) { speech->process(audio, execution.threadCount); });
  std::size_t measured = 0;
  takers.emplace_back([&](PlanarView audio) { measured += audio.frameCount(); });
  relaySlices(source, sliceFramesOf(source), execution, takers);
  return meters.finish(measured);
}

}  // namespace orvane
