#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/planar_view.h"
#include "orvane/platform/sample_conversion.h"

namespace orvane {

/// The stored samples of a file after an edit: those whose float value the edit did not change keep
/// the bytes that they had, so that what a float does not hold (32-bit integers, doubles, payloads
/// of NaN) survives outside of what was edited. Compared are the common beginning and end, and
/// where the length is the same every sample.
class KeptSamples {
 public:
  /// `edited`: channels in the file's order. Reads what it needs to compare. Throws
  /// `PlatformError`.
  KeptSamples(const InputFile& file, const PCMStream& stream, PlanarView edited);

  /// Whether any sample or the length is another one.
  bool hasChanged() const noexcept { return hasChanged_; }

  /// Frames that both begin with, and frames that both end with behind those.
  std::int64_t commonBeginning() const noexcept { return beginning_; }
  std::int64_t commonEnd() const noexcept { return end_; }

  /// Hands all samples in order to `write`, in pieces.
  void write(std::optional<std::uint64_t> ditherSeed,
             const std::function<void(std::span<const std::byte>)>& write);

  /// Of changed samples that were clipped or not finite.
  const SampleLosses& losses() const noexcept { return losses_; }

 private:
  std::span<const std::byte> storedAt(std::int64_t first, std::int64_t count);
  PlanarView floatsOf(std::span<const std::byte> stored, std::int64_t count);
  std::int64_t findBeginning();
  std::int64_t findEnd(std::int64_t most);
  void convert(std::int64_t first, std::int64_t count, std::optional<std::uint64_t> ditherSeed,
               const std::function<void(std::span<const std::byte>)>& write);
  void keepUnchanged(PlanarView edited, std::span<const std::byte> stored);

  const InputFile& file_;
  const PCMStream& stream_;
  PlanarView edited_;
  std::int64_t frameBytes_;
  std::int64_t newCount_;
  std::int64_t beginning_ = 0;
  std::int64_t end_ = 0;
  bool hasChanged_ = false;
  SampleLosses losses_{};
  std::vector<std::byte> stored_{};
  std::vector<std::byte> converted_{};
  std::vector<std::vector<float>> floats_{};
  std::vector<float*> pointers_{};
};

}  // namespace orvane
