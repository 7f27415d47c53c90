#include "orvane/core/generator/click_train.h"

namespace orvane::core {

using ReproducibleMath::Phase;

double clickAt(Phase phase, std::uint64_t partialCount) noexcept {
  if (phase == 0) return 1;
  // 1 + 2 Σ cos(kx) = sin(Kx) cot(x/2) + cos(Kx). Of the two forms of the cotangent one loses its
  // digits near 0, the other half a period away.
  const double sine = ReproducibleMath::sine(phase), cosine = ReproducibleMath::cosine(phase);
  const double cotangent = cosine > 0 ? (1 + cosine) / sine : sine / (1 - cosine);
  const Phase highest = partialCount * phase;
  return (ReproducibleMath::sine(highest) * cotangent + ReproducibleMath::cosine(highest)) /
         (1 + 2 * static_cast<double>(partialCount));
}

}  // namespace orvane::core
