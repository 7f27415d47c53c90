#pragma once

#include <cstddef>

#include "orvane/core/generator/generator_spec.h"
#include "orvane/core/generator/reproducible_math.h"

namespace orvane::core {

/// The phases of a sine whose frequency moves from a start, at the first frame, to an end that it
/// reaches when the last frame is over. Every step is the exact advance from one frame to the next,
/// so that the phase has no jump.
class Sweep {
 public:
  /// A linear or a logarithmic one.
  explicit Sweep(const GeneratorSpec& spec);

  /// The phase of the next frame, 0 for the first.
  ReproducibleMath::Phase next() noexcept;

 private:
  bool isLogarithmic_;
  double frames_;
  double startStep_;  ///< turns per frame
  double change_;     ///< of the step over the sweep; of its binary logarithm, if logarithmic
  double frame_ = 0;
  ReproducibleMath::Phase phase_ = 0;
};

}  // namespace orvane::core
