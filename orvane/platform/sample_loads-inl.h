// How one vector of samples of each encoding is loaded as floats; shared by the conversion loops.
// Included once per instruction set.
#if defined(ORVANE_PLATFORM_SAMPLE_LOADS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_PLATFORM_SAMPLE_LOADS_INL_H_
#undef ORVANE_PLATFORM_SAMPLE_LOADS_INL_H_
#else
#define ORVANE_PLATFORM_SAMPLE_LOADS_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::HWY_NAMESPACE {
#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128
namespace hn = hwy::HWY_NAMESPACE;

// A number of lanes known at compile time, also where vectors have no fixed length.
using DF = hn::CappedTag<float, HWY_HAVE_SCALABLE ? 4 : 16>;
using DI = hn::RebindToSigned<DF>;
using DB = hn::Repartition<std::uint8_t, DF>;
using VF = hn::Vec<DF>;
using VI = hn::Vec<DI>;
inline constexpr std::size_t kLanes = hn::MaxLanes(DF());

/// Left-justified integers to −1 … +1. Exact for up to 24 significant bits, rounded once beyond.
HWY_INLINE VF scaled(VI leftJustified) {
  return hn::Mul(hn::ConvertTo(DF(), leftJustified), hn::Set(DF(), 1.0F / 2147483648.0F));
}

/// Moves bytes within each run of 16; index 0x80 gives a zero byte.
template <class D>
HWY_INLINE hn::Vec<D> shuffled(D d, hn::Vec<D> bytes, const std::uint8_t* indices) {
  return hn::TableLookupBytesOr0(bytes, hn::LoadDup128(d, indices));
}

// Every reader below has:
//   kBytes      bytes of one sample;
//   load        the floats of the next kLanes samples, touching kReach bytes;
//   loadPair    the next kLanes pairs, first and second members apart, touching kPairReach bytes.

/// Pairs by way of two loads.
template <class S>
struct PairsOfLoads {
  static HWY_INLINE void loadPair(const std::uint8_t* from, VF& even, VF& odd) {
    const VF lower = S::load(from);
    const VF upper = S::load(from + kLanes * S::kBytes);
    even = hn::ConcatEven(DF(), upper, lower);
    odd = hn::ConcatOdd(DF(), upper, lower);
  }
};

template <bool kUnsigned>
struct Int8Samples : PairsOfLoads<Int8Samples<kUnsigned>> {
  static constexpr std::size_t kBytes = 1;
  static constexpr std::size_t kReach = kLanes;
  static constexpr std::size_t kPairReach = 2 * kReach;

  static HWY_INLINE VF load(const std::uint8_t* from) {
    const hn::Rebind<std::uint8_t, DF> d8;
    const hn::RebindToSigned<decltype(d8)> di8;
    auto bytes = hn::LoadU(d8, from);
    if (kUnsigned) bytes = hn::Xor(bytes, hn::Set(d8, std::uint8_t{0x80}));
    return hn::Mul(hn::ConvertTo(DF(), hn::PromoteTo(DI(), hn::BitCast(di8, bytes))),
                   hn::Set(DF(), 1.0F / 128.0F));
  }
};

HWY_ALIGN inline constexpr std::uint8_t kSwap16[16] = {1, 0, 3,  2,  5,  4,  7,  6,
                                                       9, 8, 11, 10, 13, 12, 15, 14};
HWY_ALIGN inline constexpr std::uint8_t kSwap32[16] = {3,  2,  1, 0, 7,  6,  5,  4,
                                                       11, 10, 9, 8, 15, 14, 13, 12};
HWY_ALIGN inline constexpr std::uint8_t kSwap64[16] = {7,  6,  5,  4,  3,  2,  1, 0,
                                                       15, 14, 13, 12, 11, 10, 9, 8};

template <bool kBig>
struct Int16Samples {
  static constexpr std::size_t kBytes = 2;
  static constexpr std::size_t kReach = 2 * kLanes;
  static constexpr std::size_t kPairReach = 4 * kLanes;

  static HWY_INLINE VF load(const std::uint8_t* from) {
    const hn::Rebind<std::int16_t, DF> d16;
    const hn::Repartition<std::uint8_t, decltype(d16)> d8;
    auto bytes = hn::LoadU(d8, from);
    if (kBig) bytes = shuffled(d8, bytes, kSwap16);
    return hn::Mul(hn::ConvertTo(DF(), hn::PromoteTo(DI(), hn::BitCast(d16, bytes))),
                   hn::Set(DF(), 1.0F / 32768.0F));
  }

  // A pair is one 32-bit lane: its members are taken apart by shifting, without moving lanes.
  static HWY_INLINE void loadPair(const std::uint8_t* from, VF& even, VF& odd) {
    auto bytes = hn::LoadU(DB(), from);
    if (kBig) bytes = shuffled(DB(), bytes, kSwap16);
    const VI pairs = hn::BitCast(DI(), bytes);
    even = scaled(hn::ShiftLeft<16>(pairs));
    odd = scaled(hn::And(pairs, hn::Set(DI(), static_cast<std::int32_t>(0xFFFF0000U))));
  }
};

// Three bytes go to the upper three of a 32-bit lane.
HWY_ALIGN inline constexpr std::uint8_t kUnpack24Little[16] = {0x80, 0, 1, 2, 0x80, 3, 4,  5,
                                                               0x80, 6, 7, 8, 0x80, 9, 10, 11};
HWY_ALIGN inline constexpr std::uint8_t kUnpack24Big[16] = {0x80, 2, 1, 0, 0x80, 5,  4,  3,
                                                            0x80, 8, 7, 6, 0x80, 11, 10, 9};

template <bool kBig>
struct Int24Samples : PairsOfLoads<Int24Samples<kBig>> {
  static constexpr std::size_t kBytes = 3;
  // The last 16-byte run begins 12 bytes behind the one before; 16 lanes take one load of 64 bytes.
  static constexpr std::size_t kReach = kLanes == 16 ? 64 : 3 * kLanes + 4;
  static constexpr std::size_t kPairReach = kLanes * 3 + kReach;

  static HWY_INLINE VF load(const std::uint8_t* from) {
    const auto unpacked = shuffled(DB(), twelvePerRun(from), kBig ? kUnpack24Big : kUnpack24Little);
    return scaled(hn::BitCast(DI(), unpacked));
  }

 private:
  /// Each run of 16 bytes gets the next 12 bytes of the source at its start.
  static HWY_INLINE hn::Vec<DB> twelvePerRun(const std::uint8_t* from) {
#if HWY_MAX_BYTES == 64 && !HWY_HAVE_SCALABLE
    HWY_ALIGN static constexpr std::int32_t kWords[16] = {0, 1, 2, 0, 3, 4,  5,  0,
                                                          6, 7, 8, 0, 9, 10, 11, 0};
    const auto words = hn::BitCast(DI(), hn::LoadU(DB(), from));
    return hn::BitCast(DB(), hn::TableLookupLanes(words, hn::SetTableIndices(DI(), kWords)));
#elif HWY_MAX_BYTES == 32 && !HWY_HAVE_SCALABLE
    const hn::Half<DB> half;
    return hn::Combine(DB(), hn::LoadU(half, from + 12), hn::LoadU(half, from));
#else
    return hn::LoadU(DB(), from);
#endif
  }
};

enum class Word32 { low24, int32, float32 };

template <Word32 kWord, bool kBig>
struct Word32Samples : PairsOfLoads<Word32Samples<kWord, kBig>> {
  static constexpr std::size_t kBytes = 4;
  static constexpr std::size_t kReach = 4 * kLanes;
  static constexpr std::size_t kPairReach = 2 * kReach;

  static HWY_INLINE VF load(const std::uint8_t* from) {
    auto bytes = hn::LoadU(DB(), from);
    if (kBig) bytes = shuffled(DB(), bytes, kSwap32);
    if (kWord == Word32::float32) return hn::BitCast(DF(), bytes);
    const VI words = hn::BitCast(DI(), bytes);
    return scaled(kWord == Word32::low24 ? hn::ShiftLeft<8>(words) : words);
  }
};

template <bool kBig>
struct Float64Samples : PairsOfLoads<Float64Samples<kBig>> {
  static constexpr std::size_t kBytes = 8;
  static constexpr std::size_t kReach = 8 * kLanes;
  static constexpr std::size_t kPairReach = 2 * kReach;

  static HWY_INLINE VF load(const std::uint8_t* from) {
    return hn::Combine(DF(), halfLoad(from + kLanes / 2 * 8), halfLoad(from));
  }

 private:
  using DHalf = hn::Half<DF>;
  static HWY_INLINE hn::Vec<DHalf> halfLoad(const std::uint8_t* from) {
    auto bytes = hn::LoadU(DB(), from);
    if (kBig) bytes = shuffled(DB(), bytes, kSwap64);
    return hn::DemoteTo(DHalf(), hn::BitCast(hn::Repartition<double, DB>(), bytes));
  }
};

#endif  // with vectors
}  // namespace orvane::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // per-target include guard
