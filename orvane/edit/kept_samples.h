#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "orvane/container/pcm_stream.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/planar_view.h"
#include "orvane/platform/sample_conversion.h"
#include "orvane/platform/sample_encoding.h"

namespace orvane {

/// The stored samples of a file after an edit: those whose float value the edit did not change keep
/// the bytes that they had, wherever it moved them, so that what a float does not hold (32-bit
/// integers, doubles, payloads of NaN) survives, and nothing is dithered that was not edited. Where
/// they are stored otherwise all are made anew, and dithered if the new kind cannot hold the old.
class KeptSamples {
 public:
  /// How the edited samples are stored, and of which channel they alone are, in canonical order.
  struct Storing {
    SampleEncoding encoding{};
    std::optional<std::size_t> channel{};
  };

  /// All edited audio has the file's channels, in canonical order, or the one.
  KeptSamples(const InputFile& file, const PCMStream& stream, const Storing& storing);

  /// Where an edit has put the frames of which only the result is known: those that both begin with
  /// or end with, all of them where the length is the same.
  FrameMap commonFrames(const SlicedAudio& edited);

  /// Where the edit has put the file's frames.
  void follow(FrameMap frames) { frames_ = std::move(frames); }

  /// Whether any stored sample or the length is another one.
  bool hasChanged(const SlicedAudio& edited);

  /// The bytes of a slice of the edited audio, in order. They stand until the next call.
  std::span<const std::byte> store(PlanarView edited, std::optional<std::uint64_t> ditherSeed);

  /// Of changed samples that were clipped or not finite.
  const SampleLosses& losses() const noexcept { return losses_; }

 private:
  PlanarView inFileOrder(PlanarView audio);
  void readStored(std::int64_t sourceFrame, std::int64_t count);
  PlanarView floatsAt(std::int64_t sourceFrame, std::int64_t count);
  std::byte* bytesAt(const FrameRange& slice);
  void convert(PlanarView edited, std::optional<std::uint64_t> ditherSeed, const FrameRange& slice);
  void keep(PlanarView edited, std::int64_t sourceFrame, std::optional<std::uint64_t> ditherSeed,
            const FrameRange& slice);

  const InputFile& file_;
  const PCMStream& stream_;
  FrameMap frames_{};
  std::vector<std::uint32_t> order_;          ///< edited channel of each stored one
  std::optional<std::size_t> onlyChannel_{};  ///< of the file
  SampleEncoding encoding_;
  std::int64_t frameBytes_ = 0;  ///< of the edited audio
  bool isStoredAlike_;
  bool isHeld_;                ///< every sample of the file, without rounding
  std::int64_t position_ = 0;  ///< next frame to be stored
  SampleLosses losses_{};
  std::vector<std::byte> stored_{};
  std::vector<std::byte> bytes_{};
  std::vector<std::vector<float>> floats_{};
  std::vector<float*> pointers_{};
  std::vector<const float*> ordered_{};
};

}  // namespace orvane
