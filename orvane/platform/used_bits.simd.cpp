// The bits that integers use, seen through the floats that they were read as; compiled once per
// instruction set by Highway.
#include "orvane/platform/used_bits.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/platform/used_bits.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
// After foreach_target.h.
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

std::uint32_t joinedBits(const float* samples, std::size_t count) {
  const hn::ScalableTag<float> d;
  const hn::RebindToSigned<decltype(d)> di;
  constexpr std::size_t kLanes = hn::MaxLanes(d);
  const std::size_t lanes = hn::Lanes(d);
  const auto scale = hn::Set(d, 0x1p31F);
  auto used = hn::Zero(di);
  const auto join = [&](const float* from) HWY_ATTR {
    used = hn::Or(used, hn::ConvertTo(di, hn::Mul(hn::LoadU(d, from), scale)));
  };
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) join(samples + i);
  float rest[kLanes] = {};
  for (std::size_t k = 0; i + k < count; ++k) rest[k] = samples[i + k];
  if (i < count) join(rest);
  std::int32_t all[kLanes] = {};
  hn::StoreU(used, di, all);
  std::uint32_t bits = 0;
  for (const std::int32_t lane : all) bits |= static_cast<std::uint32_t>(lane);
  return bits;
}

}  // namespace orvane::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane {

HWY_EXPORT(joinedBits);

std::uint32_t usedBits(const float* samples, std::size_t count) noexcept {
  return HWY_DYNAMIC_DISPATCH(joinedBits)(samples, count);
}

}  // namespace orvane
#endif
