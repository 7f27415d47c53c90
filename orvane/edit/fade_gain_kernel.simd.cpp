// Gains of fades and crossfades, compiled once per instruction set by Highway.
#include "orvane/edit/fade_gain_kernel.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/edit/fade_gain_kernel.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
// After foreach_target.h.
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::EditOperations::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DD = hn::ScalableTag<double>;
using DF = hn::Rebind<float, DD>;  // as many floats as a vector has doubles
using VD = hn::Vec<DD>;
using VF = hn::Vec<DF>;

// Nothing is fused: a multiplication and an addition round the same everywhere.
HWY_INLINE VD scaledSum(VD a, VD b, double c) {
  return hn::Add(hn::Mul(a, b), hn::Set(DD(), c));
}

/// sin x for x in [0, π/2] by its series; the first term left out is below 5e-14.
HWY_INLINE VD sine(VD x) {
  const VD square = hn::Mul(x, x);
  VD sum = hn::Set(DD(), 1.0 / 355687428096000.0);
  sum = scaledSum(sum, square, -1.0 / 1307674368000.0);
  sum = scaledSum(sum, square, 1.0 / 6227020800.0);
  sum = scaledSum(sum, square, -1.0 / 39916800.0);
  sum = scaledSum(sum, square, 1.0 / 362880.0);
  sum = scaledSum(sum, square, -1.0 / 5040.0);
  sum = scaledSum(sum, square, 1.0 / 120.0);
  sum = scaledSum(sum, square, -1.0 / 6.0);
  sum = scaledSum(sum, square, 1.0);
  return hn::Mul(sum, x);
}

/// log10 y for y in [1, 10]: y = 2^e · m with m in [1/√2, √2], and ln m = 2·artanh s with
/// s = (m − 1) ÷ (m + 1), |s| < 0.172; the first term left out is below 1e-13.
HWY_INLINE VD commonLogarithm(VD y) {
  constexpr double kSqrt2 = 1.41421356237309504880;
  constexpr double kLog10Of2 = 0.30102999566398119521;
  constexpr double kTwoByLn10 = 0.86858896380650365530;
  VD m = y;
  VD offset = hn::Zero(DD());
  for (int i = 0; i < 3; ++i) {
    const auto isAbove = hn::Gt(m, hn::Set(DD(), kSqrt2));
    m = hn::IfThenElse(isAbove, hn::Mul(m, hn::Set(DD(), 0.5)), m);
    offset = hn::IfThenElse(isAbove, hn::Add(offset, hn::Set(DD(), kLog10Of2)), offset);
  }
  const VD one = hn::Set(DD(), 1.0);
  const VD s = hn::Div(hn::Sub(m, one), hn::Add(m, one));
  const VD square = hn::Mul(s, s);
  VD sum = hn::Set(DD(), 1.0 / 15);
  for (int k = 13; k >= 1; k -= 2) sum = scaledSum(sum, square, 1.0 / k);
  return hn::Add(offset, hn::Mul(hn::Mul(sum, s), hn::Set(DD(), kTwoByLn10)));
}

template <FadeCurve kCurve>
HWY_INLINE VF gainsAt(VF t, bool fadesOut) {
  if constexpr (kCurve == FadeCurve::equalPower) {
    constexpr float kPi = 3.1415925F;  // one step below single precision's π
    constexpr double kHalfPi = 1.57079632679489661923;
    const VF x = hn::Mul(hn::Mul(t, hn::Set(DF(), kPi)), hn::Set(DF(), 0.5F));
    const VD angle = hn::PromoteTo(DD(), x);
    return hn::DemoteTo(DF(), sine(fadesOut ? hn::Sub(hn::Set(DD(), kHalfPi), angle) : angle));
  } else {
    VF gain = t;
    if constexpr (kCurve == FadeCurve::logarithmic) {
      const VF y = hn::Add(hn::Mul(hn::Set(DF(), 9.0F), t), hn::Set(DF(), 1.0F));
      gain = hn::DemoteTo(DF(), commonLogarithm(hn::PromoteTo(DD(), y)));
    }
    return fadesOut ? hn::Sub(hn::Set(DF(), 1.0F), gain) : gain;
  }
}

template <FadeCurve kCurve>
void fill(bool fadesOut, double first, float divisor, float* gains, std::size_t count) {
  const std::size_t lanes = hn::Lanes(DD());
  HWY_ALIGN float last[hn::MaxLanes(DF())];
  for (std::size_t i = 0; i < count; i += lanes) {
    // Rounded to single precision like one frame number of any size.
    const VD frame = hn::Iota(DD(), first + static_cast<double>(i));
    const VF t = hn::Div(hn::DemoteTo(DF(), frame), hn::Set(DF(), divisor));
    const VF gain = gainsAt<kCurve>(t, fadesOut);
    if (i + lanes <= count) {
      hn::StoreU(gain, DF(), gains + i);
    } else {
      hn::Store(gain, DF(), last);
      for (std::size_t k = i; k < count; ++k) gains[k] = last[k - i];
    }
  }
}

void fillAny(FadeCurve curve, bool fadesOut, double first, float divisor, float* gains,
             std::size_t count) {
  switch (curve) {
    case FadeCurve::linear:
      return fill<FadeCurve::linear>(fadesOut, first, divisor, gains, count);
    case FadeCurve::logarithmic:
      return fill<FadeCurve::logarithmic>(fadesOut, first, divisor, gains, count);
    case FadeCurve::equalPower:
      return fill<FadeCurve::equalPower>(fadesOut, first, divisor, gains, count);
  }
}

}  // namespace orvane::EditOperations::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane::EditOperations {

HWY_EXPORT(fillAny);

void fillFadeGains(FadeCurve curve, FadeDirection direction, std::int64_t first, float divisor,
                   std::span<float> gains) noexcept {
  HWY_DYNAMIC_DISPATCH(fillAny)
  (curve, direction == FadeDirection::fadeOut, static_cast<double>(first), divisor, gains.data(),
   gains.size());
}

}  // namespace orvane::EditOperations
#endif  // HWY_ONCE
