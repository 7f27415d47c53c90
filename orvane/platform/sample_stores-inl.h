// How one vector of floats is stored as samples of each encoding. Included once per instruction
// set.
#if defined(ORVANE_PLATFORM_SAMPLE_STORES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_PLATFORM_SAMPLE_STORES_INL_H_
#undef ORVANE_PLATFORM_SAMPLE_STORES_INL_H_
#else
#define ORVANE_PLATFORM_SAMPLE_STORES_INL_H_
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "hwy/highway.h"
#include "orvane/platform/sample_conversion.h"
#include "orvane/platform/sample_loads-inl.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::HWY_NAMESPACE {
#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

/// Steps of 2^−(kBits − 1), to nearest, ties to even; what is no number becomes 0, what lies beyond
/// the range its end. Exact in single precision for up to 24 bits: one more bit than the mantissa
/// has is needed only where every float is a whole step already.
template <int kBits>
HWY_INLINE VI quantized(VF samples, SampleLosses& losses) {
  static_assert(kBits <= 24);
  constexpr float kScale = static_cast<float>(1 << (kBits - 1));
  const DF d;
  const VF steps = hn::Round(hn::Mul(samples, hn::Set(d, kScale)));
  const VF lowest = hn::Set(d, -kScale);
  const VF highest = hn::Set(d, kScale - 1.0F);
  const auto isWithin = hn::And(hn::Ge(steps, lowest), hn::Le(steps, highest));
  if (HWY_UNLIKELY(!hn::AllTrue(d, isWithin))) {
    const auto isFinite = hn::IsFinite(samples);
    const std::size_t finite = hn::CountTrue(d, isFinite);
    losses.nonFinite += kLanes - finite;
    losses.clipped += finite - hn::CountTrue(d, isWithin);
    // A comparison with NaN is false: 0 takes its place before the range is applied.
    const VF numbers = hn::IfThenZeroElse(hn::IsNaN(samples), steps);
    return hn::ConvertTo(DI(), hn::Min(hn::Max(numbers, lowest), highest));
  }
  return hn::ConvertTo(DI(), steps);
}

/// The same for 32 bits, in double precision: in single, +1.0 would wrap round.
HWY_INLINE VI quantized32(VF samples, SampleLosses& losses) {
  const DF d;
  const auto isWithin =
      hn::And(hn::Ge(samples, hn::Set(d, -1.0F)), hn::Lt(samples, hn::Set(d, 1.0F)));
  if (HWY_UNLIKELY(!hn::AllTrue(d, isWithin))) {
    const std::size_t finite = hn::CountTrue(d, hn::IsFinite(samples));
    losses.nonFinite += kLanes - finite;
    losses.clipped += finite - hn::CountTrue(d, isWithin);
    samples = hn::IfThenZeroElse(hn::IsNaN(samples), samples);
  }
  const hn::Half<DF> half;
  const auto steps = [](auto part) HWY_ATTR {
    const hn::Repartition<double, DF> dd;
    const auto scaledPart = hn::Round(hn::Mul(hn::PromoteTo(dd, part), hn::Set(dd, 0x1p31)));
    const auto inRange =
        hn::Min(hn::Max(scaledPart, hn::Set(dd, -0x1p31)), hn::Set(dd, 0x1p31 - 1));
    return hn::DemoteTo(hn::Half<DI>(), inRange);
  };
  return hn::Combine(DI(), steps(hn::UpperHalf(half, samples)),
                     steps(hn::LowerHalf(half, samples)));
}

HWY_INLINE void countNonFinite(VF samples, SampleLosses& losses) {
  const auto isFinite = hn::IsFinite(samples);
  if (HWY_UNLIKELY(!hn::AllTrue(DF(), isFinite)))
    losses.nonFinite += kLanes - hn::CountTrue(DF(), isFinite);
}

// Every writer below has:
//   kBytes      bytes of one sample;
//   store       kLanes floats as that many samples, touching no byte behind them.

template <bool kUnsigned>
struct Int8Stores {
  static constexpr std::size_t kBytes = 1;

  static HWY_INLINE void store(VF samples, std::uint8_t* to, SampleLosses& losses) {
    const hn::Rebind<std::int8_t, DF> di8;
    const hn::RebindToUnsigned<decltype(di8)> d8;
    auto bytes = hn::BitCast(d8, hn::DemoteTo(di8, quantized<8>(samples, losses)));
    if (kUnsigned) bytes = hn::Xor(bytes, hn::Set(d8, std::uint8_t{0x80}));
    hn::StoreU(bytes, d8, to);
  }
};

template <bool kBig>
struct Int16Stores {
  static constexpr std::size_t kBytes = 2;

  static HWY_INLINE void store(VF samples, std::uint8_t* to, SampleLosses& losses) {
    const hn::Rebind<std::int16_t, DF> d16;
    const hn::Repartition<std::uint8_t, decltype(d16)> d8;
    auto bytes = hn::BitCast(d8, hn::DemoteTo(d16, quantized<16>(samples, losses)));
    if (kBig) bytes = shuffled(d8, bytes, kSwap16);
    hn::StoreU(bytes, d8, to);
  }
};

// The lower three bytes of four 32-bit lanes, together at the start of their 16.
HWY_ALIGN inline constexpr std::uint8_t kPack24Little[16] = {
    0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0x80, 0x80, 0x80, 0x80};
HWY_ALIGN inline constexpr std::uint8_t kPack24Big[16] = {2, 1,  0,  6,  5,    4,    10,   9,
                                                          8, 14, 13, 12, 0x80, 0x80, 0x80, 0x80};

template <bool kBig>
struct Int24Stores {
  static constexpr std::size_t kBytes = 3;

  static HWY_INLINE void store(VF samples, std::uint8_t* to, SampleLosses& losses) {
    const auto bytes = hn::BitCast(DB(), quantized<24>(samples, losses));
    HWY_ALIGN std::uint8_t packed[kLanes * 4];
    hn::Store(shuffled(DB(), bytes, kBig ? kPack24Big : kPack24Little), DB(), packed);
    for (std::size_t four = 0; four < kLanes / 4; ++four)
      std::memcpy(to + 12 * four, packed + 16 * four, 12);
  }
};

template <bool kBig>
struct Int32Stores {
  static constexpr std::size_t kBytes = 4;

  static HWY_INLINE void store(VF samples, std::uint8_t* to, SampleLosses& losses) {
    auto bytes = hn::BitCast(DB(), quantized32(samples, losses));
    if (kBig) bytes = shuffled(DB(), bytes, kSwap32);
    hn::StoreU(bytes, DB(), to);
  }
};

template <bool kBig>
struct Float32Stores {
  static constexpr std::size_t kBytes = 4;

  static HWY_INLINE void store(VF samples, std::uint8_t* to, SampleLosses& losses) {
    countNonFinite(samples, losses);
    auto bytes = hn::BitCast(DB(), samples);
    if (kBig) bytes = shuffled(DB(), bytes, kSwap32);
    hn::StoreU(bytes, DB(), to);
  }
};

template <bool kBig>
struct Float64Stores {
  static constexpr std::size_t kBytes = 8;

  static HWY_INLINE void store(VF samples, std::uint8_t* to, SampleLosses& losses) {
    countNonFinite(samples, losses);
    const hn::Half<DF> half;
    storeHalf(hn::LowerHalf(half, samples), to);
    storeHalf(hn::UpperHalf(half, samples), to + kLanes / 2 * 8);
  }

 private:
  static HWY_INLINE void storeHalf(hn::Vec<hn::Half<DF>> samples, std::uint8_t* to) {
    auto bytes = hn::BitCast(DB(), hn::PromoteTo(hn::Repartition<double, DB>(), samples));
    if (kBig) bytes = shuffled(DB(), bytes, kSwap64);
    hn::StoreU(bytes, DB(), to);
  }
};

#endif  // with vectors
}  // namespace orvane::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
