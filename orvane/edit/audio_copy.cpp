#include "orvane/edit/audio_copy.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "orvane/edit/moved_source.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/stage_progress.h"
#include "orvane/rawpcm/raw_pcm_filling.h"

namespace orvane {
namespace {

constexpr std::int64_t kPieceFrames = 1 << 16;

/// Bits of a float's significand.
constexpr std::uint32_t kFloatBits = 24;

/// Samples of a headerless file, interleaved, from where they stand.
class StoredSamples {
 public:
  StoredSamples(const InputFile& file, const RawPCMFormat& format, std::int64_t frameCount)
      : payload_(file, format.headerSkipBytes),
        isPlanar_(format.isPlanar),
        channels_(format.channelCount),
        width_(bytesPerSample(format.encoding)),
        frameCount_(frameCount) {}

  std::span<const std::byte> read(std::int64_t first, std::int64_t count) {
    if (!isPlanar_) {
      const std::int64_t frameBytes = channels_ * width_;
      return {payload_.bytes(first * frameBytes, count * frameBytes, frames_),
              static_cast<std::size_t>(count * frameBytes)};
    }
    frames_.resize(static_cast<std::size_t>(count * channels_ * width_));
    for (std::int64_t channel = 0; channel < channels_; ++channel) {
      const std::byte* const run =
          payload_.bytes((channel * frameCount_ + first) * width_, count * width_, run_);
      for (std::int64_t i = 0; i < count; ++i)
        std::copy_n(run + i * width_, width_, frames_.begin() + (i * channels_ + channel) * width_);
    }
    return frames_;
  }

 private:
  RawPCMPayloadInFile payload_;
  bool isPlanar_;
  std::int64_t channels_;
  std::int64_t width_;
  std::int64_t frameCount_;
  std::vector<std::byte> frames_{};
  std::vector<std::byte> run_{};
};

void copyStored(AudioSource& source, SampleEncoding encoding, PCMFileWriter& writer,
                const Execution& execution) {
  const std::int64_t frameCount = source.frameLength();
  StoredSamples samples(source.file(), *source.rawFormat(), frameCount);
  StageProgress progress(execution.observer, "Reading", static_cast<std::size_t>(frameCount));
  for (std::int64_t first = 0; first < frameCount; first += kPieceFrames) {
    const std::int64_t count = std::min(kPieceFrames, frameCount - first);
    writer.writeStored(encoding, samples.read(first, count));
    progress.advance(static_cast<std::size_t>(count));
  }
}

}  // namespace

void copyAudio(AudioSource& source, PCMFileWriter& writer, const Execution& execution) {
  if (source.rawFormat()) {
    const SampleEncoding encoding = sampleEncoding(*source.rawFormat());
    const bool isFloat32 =
        encoding.kind == SampleEncoding::Kind::floatingPoint && encoding.bytes == 4;
    if (encoding.bits > kFloatBits && !isFloat32 && writer.holds(encoding))
      return copyStored(source, encoding, writer, execution);
  }
  const std::int64_t frameCount = source.frameLength();
  const auto piece =
      source.makeBuffer(static_cast<std::uint32_t>(std::min(kPieceFrames, frameCount)));
  for (std::int64_t done = 0; done < frameCount; done += piece->frameLength()) {
    source.read(*piece);
    if (piece->frameLength() == 0)
      throw PlatformError(source.url(), "the audio ends before its stated length");
    writer.write(piece->view());
  }
}

void copyAudio(const SlicedAudio& audio, PCMFileWriter& writer, const Execution& execution) {
  StageProgress progress(execution.observer, "Writing", static_cast<std::size_t>(audio.frameCount));
  audio.deliver([&](PlanarView slice) {
    writer.write(slice);
    progress.advance(slice.frameCount());
  });
}

void copyEdited(const SlicedAudio& audio, std::shared_ptr<AudioSource> source,
                const FrameMap& frames, std::optional<std::size_t> channel, PCMFileWriter& writer,
                const Execution& execution) {
  MovedSource before(std::move(source), frames);
  StageProgress progress(execution.observer, "Writing", static_cast<std::size_t>(audio.frameCount));
  audio.deliver([&](PlanarView slice) {
    const PlanarView was = before.next(slice.frameCount());
    writer.writeChanged(slice, channel ? was.channels(*channel, 1) : was);
    progress.advance(slice.frameCount());
  });
}

}  // namespace orvane
