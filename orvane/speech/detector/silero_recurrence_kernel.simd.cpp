#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/speech/detector/silero_recurrence_kernel.simd.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orvane/speech/detector/silero_layout.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::silero::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Lanes = hn::CappedTag<float, kUnitGroup>;
using Vector = hn::Vec<Lanes>;
constexpr std::size_t kLanes = hn::MaxLanes(Lanes());

// Eight chains of sums hide the latency of an addition: two vectors per gate, or two halves of the
// inputs where one vector holds a whole group of units.
constexpr std::size_t kUnitVectors = kLanes < kUnitGroup ? 2 : 1;
constexpr std::size_t kPhases = kLanes < kUnitGroup ? 1 : 2;

/// Beyond ±28 the logistic function is 0 or 1 to 1e-12, and products of three exponentials are
/// still finite.
constexpr float kGateBound = 28.0F;

/// e^x for |x| ≤ 28; relative error below 2e-7. x = n ln 2 + r, |r| ≤ ln 2 / 2, and a minimax
/// polynomial of degree 6 for e^r (relative error 3.1e-9 before rounding).
HWY_INLINE Vector exponential(Vector x) {
  const Lanes d;
  const hn::RebindToSigned<Lanes> di;
  const Vector n = hn::Round(hn::Mul(x, hn::Set(d, 1.44269504F)));
  // ln 2 in two parts: the first has so few bits that its multiples are exact.
  Vector r = hn::NegMulAdd(n, hn::Set(d, 0.693359375F), x);
  r = hn::NegMulAdd(n, hn::Set(d, -2.12194440e-4F), r);
  Vector p = hn::Set(d, 1.3814598568593253e-3F);
  p = hn::MulAdd(p, r, hn::Set(d, 8.368716878482167e-3F));
  p = hn::MulAdd(p, r, hn::Set(d, 4.1668388046876066e-2F));
  p = hn::MulAdd(p, r, hn::Set(d, 0.16666520631723225F));
  p = hn::MulAdd(p, r, hn::Set(d, 0.4999999344778888F));
  p = hn::MulAdd(hn::Mul(r, r), p, r);
  p = hn::Add(p, hn::Set(d, 1.0F));
  const auto exponent = hn::ShiftLeft<23>(hn::Add(hn::ConvertTo(di, n), hn::Set(di, 127)));
  return hn::Mul(p, hn::BitCast(d, exponent));
}

/// e^(−x), x clamped to ±28; 1 / (1 + e^(−x)) is the logistic function.
HWY_INLINE Vector negativeExponential(Vector x) {
  const Lanes d;
  return exponential(hn::Clamp(hn::Neg(x), hn::Set(d, -kGateBound), hn::Set(d, kGateBound)));
}

/// New cell and hidden values of one vector of units from their gates' sums. The logistic functions
/// and hyperbolic tangents are fractions of exponentials; each result takes one division. Absolute
/// error of either below 5e-7 of its range.
HWY_INLINE Vector updateUnits(Vector input, Vector forget, Vector candidate, Vector outputGate,
                              float* cell) {
  const Lanes d;
  const Vector one = hn::Set(d, 1.0F);
  const Vector i = hn::Add(one, negativeExponential(input));
  const Vector f = hn::Add(one, negativeExponential(forget));
  const Vector g = negativeExponential(hn::Add(candidate, candidate));
  const Vector o = hn::Add(one, negativeExponential(outputGate));
  // c' = c / f + (1 − g) / ((1 + g) i)
  const Vector ig = hn::Mul(i, hn::Add(one, g));
  const Vector numerator = hn::MulAdd(hn::Load(d, cell), ig, hn::Mul(hn::Sub(one, g), f));
  const Vector c = hn::Div(numerator, hn::Mul(ig, f));
  hn::Store(c, d, cell);
  // h' = tanh(c') / o
  const Vector t = negativeExponential(hn::Add(c, c));
  return hn::Div(hn::Sub(one, t), hn::Mul(hn::Add(one, t), o));
}

/// One step of `kUnitVectors` vectors of units; `weights`, `gates` and `cell` begin at the first.
HWY_INLINE void stepUnits(const float* HWY_RESTRICT weights, const float* HWY_RESTRICT gates,
                          const float* HWY_RESTRICT hidden, float* HWY_RESTRICT cell,
                          float* HWY_RESTRICT newHidden) {
  const Lanes d;
  Vector sums[kPhases][4][kUnitVectors];
  HWY_UNROLL(4)
  for (std::size_t gate = 0; gate < 4; ++gate) {
    HWY_UNROLL(2)
    for (std::size_t v = 0; v < kUnitVectors; ++v) {
      sums[0][gate][v] = hn::Load(d, gates + gate * kUnitGroup + v * kLanes);
      if constexpr (kPhases == 2) sums[1][gate][v] = hn::Zero(d);
    }
  }
  for (std::size_t j = 0; j < kHiddenSize; j += kPhases) {
    HWY_UNROLL(2)
    for (std::size_t phase = 0; phase < kPhases; ++phase) {
      const Vector h = hn::Set(d, hidden[j + phase]);
      const float* const row = weights + (j + phase) * kGroupGates;
      HWY_UNROLL(4)
      for (std::size_t gate = 0; gate < 4; ++gate) {
        HWY_UNROLL(2)
        for (std::size_t v = 0; v < kUnitVectors; ++v)
          sums[phase][gate][v] = hn::MulAdd(h, hn::Load(d, row + gate * kUnitGroup + v * kLanes),
                                            sums[phase][gate][v]);
      }
    }
  }
  HWY_UNROLL(2)
  for (std::size_t v = 0; v < kUnitVectors; ++v) {
    if constexpr (kPhases == 2) {
      HWY_UNROLL(4)
      for (std::size_t gate = 0; gate < 4; ++gate)
        sums[0][gate][v] = hn::Add(sums[0][gate][v], sums[1][gate][v]);
    }
    hn::Store(
        updateUnits(sums[0][0][v], sums[0][1][v], sums[0][2][v], sums[0][3][v], cell + v * kLanes),
        d, newHidden + v * kLanes);
  }
}

HWY_INLINE float headSum(const PackedWeights& weights, const float* HWY_RESTRICT hidden) {
  const Lanes d;
  Vector sum = hn::Zero(d);
  for (std::size_t j = 0; j < kHiddenSize; j += kLanes)
    sum = hn::MulAdd(hn::Max(hn::Load(d, hidden + j), hn::Zero(d)),
                     hn::Load(d, weights.headWeights.get() + j), sum);
  return hn::GetLane(hn::SumOfLanes(d, sum)) + weights.headBias;
}

HWY_INLINE float probability(float sum) {
  const Lanes d;
  const Vector one = hn::Set(d, 1.0F);
  return hn::GetLane(hn::Div(one, hn::Add(one, negativeExponential(hn::Set(d, sum)))));
}

void runRecurrence(const PackedWeights& weights, const float* gates, std::size_t stepCount,
                   RecurrentState& state, float* probabilities) {
  alignas(64) float newHidden[kHiddenSize];
  for (std::size_t step = 0; step < stepCount; ++step) {
    const float* const stepGates = gates + step * kGateSize;
    for (std::size_t group = 0; group < kUnitGroupCount; ++group) {
      const float* const groupWeights =
          weights.recurrentWeights.get() + group * kGroupGates * kHiddenSize;
      for (std::size_t unit = 0; unit < kUnitGroup; unit += kUnitVectors * kLanes)
        stepUnits(groupWeights + unit, stepGates + group * kGroupGates + unit, state.hidden.data(),
                  state.cell.data() + group * kUnitGroup + unit,
                  newHidden + group * kUnitGroup + unit);
    }
    hwy::CopyBytes<sizeof(newHidden)>(newHidden, state.hidden.data());
    probabilities[step] = probability(headSum(weights, newHidden));
  }
}

}  // namespace orvane::silero::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane::silero {

HWY_EXPORT(runRecurrence);

void runRecurrence(const PackedWeights& weights, const float* gates, std::size_t stepCount,
                   RecurrentState& state, float* probabilities) {
  HWY_DYNAMIC_DISPATCH(runRecurrence)(weights, gates, stepCount, state, probabilities);
}

}  // namespace orvane::silero
#endif  // HWY_ONCE
