#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "orvane/platform/planar_view.h"

namespace orvane {

/// Audio beside what it was before an edit, sample by sample and to the bit: payloads of NaN count,
/// and zeros have a sign.
class ChangedSamples {
 public:
  /// Both have the same shape. The views have to stay.
  ChangedSamples(PlanarView audio, PlanarView before);

  static bool areSame(PlanarView a, PlanarView b) noexcept;

  /// The audio with zeros in place of what is as it was before: those are neither clipped nor lost.
  PlanarView changed() const noexcept { return {pointers_, audio_.frameCount()}; }

  /// Copies what is as it was before, of `width` bytes each, between interleaved samples.
  void copyUnchanged(const std::byte* from, std::size_t width, std::byte* to) const noexcept;

 private:
  PlanarView audio_;
  PlanarView before_;
  std::vector<std::vector<float>> changed_;
  std::vector<const float*> pointers_{};
};

}  // namespace orvane
