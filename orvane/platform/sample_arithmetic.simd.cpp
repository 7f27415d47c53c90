// Arithmetic on runs of samples, compiled once per instruction set by Highway.
#include "orvane/platform/sample_arithmetic.h"

#include <cfloat>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/platform/sample_arithmetic.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
// After foreach_target.h.
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::SampleArithmetic::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Calls `step(d, i)` for whole vectors, and for the samples that remain one by one.
template <class Step>
HWY_INLINE void forEach(std::size_t count, Step step) {
  const hn::ScalableTag<float> all;
  const hn::CappedTag<float, 1> one;
  const std::size_t lanes = hn::Lanes(all);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) step(all, i);
  for (; i < count; ++i) step(one, i);
}

void scaleBy(float* x, std::size_t count, float gain) {
  forEach(count, [=](auto d, std::size_t i) HWY_ATTR {
    hn::StoreU(hn::Mul(hn::LoadU(d, x + i), hn::Set(d, gain)), d, x + i);
  });
}

void multiplyBy(float* x, const float* gains, std::size_t count) {
  forEach(count, [=](auto d, std::size_t i) HWY_ATTR {
    hn::StoreU(hn::Mul(hn::LoadU(d, x + i), hn::LoadU(d, gains + i)), d, x + i);
  });
}

void negateAll(float* x, std::size_t count) {
  forEach(count, [=](auto d, std::size_t i)
                     HWY_ATTR { hn::StoreU(hn::Neg(hn::LoadU(d, x + i)), d, x + i); });
}

void offsetBy(float* x, std::size_t count, float constant) {
  forEach(count, [=](auto d, std::size_t i) HWY_ATTR {
    hn::StoreU(hn::Add(hn::LoadU(d, x + i), hn::Set(d, constant)), d, x + i);
  });
}

void addAllScaled(float* x, const float* others, std::size_t count, float gain) {
  forEach(count, [=](auto d, std::size_t i) HWY_ATTR {
    const auto scaled = hn::Mul(hn::LoadU(d, others + i), hn::Set(d, gain));
    hn::StoreU(hn::Add(hn::LoadU(d, x + i), scaled), d, x + i);
  });
}

void raiseTo(float* x, const float* others, std::size_t count) {
  forEach(count, [=](auto d, std::size_t i) HWY_ATTR {
    hn::StoreU(hn::Max(hn::LoadU(d, x + i), hn::LoadU(d, others + i)), d, x + i);
  });
}

bool silenceAllNonFinite(float* x, std::size_t count) {
  bool any = false;
  forEach(count, [=, &any](auto d, std::size_t i) HWY_ATTR {
    const auto samples = hn::LoadU(d, x + i);
    const auto isFinite = hn::Le(hn::Abs(samples), hn::Set(d, FLT_MAX));
    if (hn::AllTrue(d, isFinite)) return;
    any = true;
    hn::StoreU(hn::IfThenElseZero(isFinite, samples), d, x + i);
  });
  return any;
}

void mixBoth(const float* a, const float* gainsOfA, const float* b, const float* gainsOfB,
             float* destination, std::size_t count) {
  forEach(count, [=](auto d, std::size_t i) HWY_ATTR {
    const auto first = hn::Mul(hn::LoadU(d, a + i), hn::LoadU(d, gainsOfA + i));
    const auto second = hn::Mul(hn::LoadU(d, b + i), hn::LoadU(d, gainsOfB + i));
    hn::StoreU(hn::Add(first, second), d, destination + i);
  });
}

}  // namespace orvane::SampleArithmetic::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane::SampleArithmetic {

HWY_EXPORT(scaleBy);
HWY_EXPORT(multiplyBy);
HWY_EXPORT(negateAll);
HWY_EXPORT(offsetBy);
HWY_EXPORT(addAllScaled);
HWY_EXPORT(raiseTo);
HWY_EXPORT(silenceAllNonFinite);
HWY_EXPORT(mixBoth);

void scale(std::span<float> samples, float gain) noexcept {
  HWY_DYNAMIC_DISPATCH(scaleBy)(samples.data(), samples.size(), gain);
}

void multiply(std::span<float> samples, const float* gains) noexcept {
  HWY_DYNAMIC_DISPATCH(multiplyBy)(samples.data(), gains, samples.size());
}

void negate(std::span<float> samples) noexcept {
  HWY_DYNAMIC_DISPATCH(negateAll)(samples.data(), samples.size());
}

void offset(std::span<float> samples, float constant) noexcept {
  HWY_DYNAMIC_DISPATCH(offsetBy)(samples.data(), samples.size(), constant);
}

void addScaled(std::span<float> samples, const float* others, float gain) noexcept {
  HWY_DYNAMIC_DISPATCH(addAllScaled)(samples.data(), others, samples.size(), gain);
}

void raise(std::span<float> samples, const float* others) noexcept {
  HWY_DYNAMIC_DISPATCH(raiseTo)(samples.data(), others, samples.size());
}

bool silenceNonFinite(std::span<float> samples) noexcept {
  return HWY_DYNAMIC_DISPATCH(silenceAllNonFinite)(samples.data(), samples.size());
}

void mix(const float* a, const float* gainsOfA, const float* b, const float* gainsOfB,
         float* destination, std::size_t count) noexcept {
  HWY_DYNAMIC_DISPATCH(mixBoth)(a, gainsOfA, b, gainsOfB, destination, count);
}

}  // namespace orvane::SampleArithmetic
#endif  // HWY_ONCE
