#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "orvane/container/pcm_stream.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/planar_view.h"
#include "orvane/platform/sample_conversion.h"

namespace orvane {

/// The stored samples of a file after an edit: those whose float value the edit did not change keep
/// the bytes that they had, wherever it moved them, so that what a float does not hold (32-bit
/// integers, doubles, payloads of NaN) survives, and nothing is dithered that was not edited.
class KeptSamples {
 public:
  /// `frames`: where the edit put the file's frames. All audio has the file's channels, in
  /// canonical order.
  KeptSamples(const InputFile& file, const PCMStream& stream, FrameMap frames);

  /// Where an edit has put the frames of which only the result is known: those that both begin with
  /// or end with, all of them where the length is the same.
  static FrameMap commonFrames(const InputFile& file, const PCMStream& stream,
                               const SlicedAudio& edited);

  /// Whether any sample or the length is another one.
  bool hasChanged(const SlicedAudio& edited);

  /// The bytes of a slice of the edited audio, in order. They stand until the next call.
  std::span<const std::byte> store(PlanarView edited, std::optional<std::uint64_t> ditherSeed);

  /// Of changed samples that were clipped or not finite.
  const SampleLosses& losses() const noexcept { return losses_; }

  std::int64_t frameBytes() const noexcept { return frameBytes_; }

 private:
  PlanarView inFileOrder(PlanarView audio);
  PlanarView floatsAt(std::int64_t sourceFrame, std::int64_t count);
  std::byte* bytesAt(const FrameRange& slice);
  void convert(PlanarView edited, std::optional<std::uint64_t> ditherSeed, const FrameRange& slice);
  void keep(PlanarView edited, std::int64_t sourceFrame, std::optional<std::uint64_t> ditherSeed,
            const FrameRange& slice);

  const InputFile& file_;
  const PCMStream& stream_;
  FrameMap frames_;
  std::vector<std::uint32_t> order_;  ///< canonical channel of each stored one
  std::int64_t frameBytes_;
  std::int64_t position_ = 0;  ///< next frame to be stored
  SampleLosses losses_{};
  std::vector<std::byte> stored_{};
  std::vector<std::byte> bytes_{};
  std::vector<std::vector<float>> floats_{};
  std::vector<float*> pointers_{};
  std::vector<const float*> ordered_{};
};

}  // namespace orvane
