// Peaks and sums over runs of samples, compiled once per instruction set by Highway.
#include "orvane/platform/signal_kernels.h"

#include <cmath>
#include <cstdint>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/platform/signal_kernels.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
// After foreach_target.h.
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::SignalKernels::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Sample i of a run always goes to partial sum i mod 8, whatever the vector length, and the partial
// sums are added in one fixed order: results do not depend on the machine.
inline constexpr std::size_t kPartialSums = 8;
// Partial sums are drained into the total after so many samples, which keeps rounding errors small
// over hours of audio.
inline constexpr std::size_t kBlock = 32768;

using DD = hn::CappedTag<double, HWY_HAVE_SCALABLE ? 2 : kPartialSums>;
using DF = hn::Rebind<float, DD>;  // as many floats as a vector has doubles
using VD = hn::Vec<DD>;
using VF = hn::Vec<DF>;
inline constexpr std::size_t kLanes = hn::MaxLanes(DD());
inline constexpr std::size_t kVectors = kPartialSums / kLanes;

/// The sum of `kVectors` vectors of partial sums, in the fixed order.
HWY_INLINE double total(const VD (&partial)[kVectors]) {
  HWY_ALIGN double sums[kPartialSums];
  for (std::size_t v = 0; v < kVectors; ++v) hn::Store(partial[v], DD(), sums + v * kLanes);
  return ((sums[0] + sums[4]) + (sums[2] + sums[6])) + ((sums[1] + sums[5]) + (sums[3] + sums[7]));
}

/// The larger one; what is NaN in `samples` is passed over.
template <class D>
HWY_INLINE hn::Vec<D> raisedPeak(D /*d*/, hn::Vec<D> peak, hn::Vec<D> samples) {
  const auto magnitude = hn::Abs(samples);
  return hn::IfThenElse(hn::Gt(magnitude, peak), magnitude, peak);
}

template <class D>
HWY_INLINE float largestLane(D d, hn::Vec<D> values) {
  HWY_ALIGN float lanes[hn::MaxLanes(D())];
  hn::Store(values, d, lanes);
  float largest = 0;
  for (std::size_t i = 0; i < hn::Lanes(d); ++i) largest = HWY_MAX(largest, lanes[i]);
  return largest;
}

/// Running figures of one run.
struct RunSums {
  VF peak[kVectors];
  VD sum[kVectors];
  VD squares[kVectors];

  HWY_INLINE void clear() {
    for (std::size_t v = 0; v < kVectors; ++v) {
      peak[v] = hn::Zero(DF());
      sum[v] = hn::Zero(DD());
      squares[v] = hn::Zero(DD());
    }
  }

  /// Takes the samples of partial sums v·kLanes … and gives them back as doubles.
  HWY_INLINE VD add(std::size_t v, const float* samples) {
    const VF x = hn::LoadU(DF(), samples + v * kLanes);
    const VD wide = hn::PromoteTo(DD(), x);
    peak[v] = raisedPeak(DF(), peak[v], x);
    sum[v] = hn::Add(sum[v], wide);
    // Exact product: fused or not, the result is the same.
    squares[v] = hn::MulAdd(wide, wide, squares[v]);
    return wide;
  }

  HWY_INLINE void drainInto(RunStatistics& result) const {
    for (std::size_t v = 0; v < kVectors; ++v)
      result.peak = HWY_MAX(result.peak, largestLane(DF(), peak[v]));
    result.sum += total(sum);
    result.sumOfSquares += total(squares);
  }
};

/// Copies the last, incomplete group of samples and zeros behind it, which change no figure.
HWY_INLINE const float* padded(const float* samples, std::size_t count, float* room) {
  for (std::size_t i = 0; i < kPartialSums; ++i) room[i] = i < count ? samples[i] : 0.0F;
  return room;
}

HWY_INLINE void addGroup(RunSums& sums, const float* samples) {
  for (std::size_t v = 0; v < kVectors; ++v) sums.add(v, samples);
}

void runSums(const float* samples, std::size_t count, RunStatistics& result) {
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t block = HWY_MIN(kBlock, count - begin);
    const float* from = samples + begin;
    RunSums sums;
    sums.clear();
    std::size_t i = 0;
    for (; i + kPartialSums <= block; i += kPartialSums) addGroup(sums, from + i);
    if (i < block) {
      float room[kPartialSums];
      addGroup(sums, padded(from + i, block - i, room));
    }
    sums.drainInto(result);
  }
}

/// Running figures of two runs and their product.
struct PairSums {
  RunSums left;
  RunSums right;
  VD dot[kVectors];

  HWY_INLINE void add(const float* l, const float* r) {
    for (std::size_t v = 0; v < kVectors; ++v)
      dot[v] = hn::MulAdd(left.add(v, l), right.add(v, r), dot[v]);
  }
};

void pairSums(const float* left, const float* right, std::size_t count, PairStatistics& result) {
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t block = HWY_MIN(kBlock, count - begin);
    PairSums sums;
    sums.left.clear();
    sums.right.clear();
    for (VD& dot : sums.dot) dot = hn::Zero(DD());
    std::size_t i = 0;
    for (; i + kPartialSums <= block; i += kPartialSums)
      sums.add(left + begin + i, right + begin + i);
    if (i < block) {
      float leftRoom[kPartialSums];
      float rightRoom[kPartialSums];
      sums.add(padded(left + begin + i, block - i, leftRoom),
               padded(right + begin + i, block - i, rightRoom));
    }
    sums.left.drainInto(result.left);
    sums.right.drainInto(result.right);
    result.dot += total(sums.dot);
  }
}

float largestMagnitude(const float* samples, std::size_t count) {
  const hn::ScalableTag<float> d;
  const std::size_t lanes = hn::Lanes(d);
  auto a = hn::Zero(d);
  auto b = a;
  std::size_t i = 0;
  for (; i + 2 * lanes <= count; i += 2 * lanes) {
    a = raisedPeak(d, a, hn::LoadU(d, samples + i));
    b = raisedPeak(d, b, hn::LoadU(d, samples + i + lanes));
  }
  float peak = largestLane(d, raisedPeak(d, a, b));
  for (; i < count; ++i) {
    const float magnitude = std::fabs(samples[i]);
    if (magnitude > peak) peak = magnitude;
  }
  return peak;
}

std::size_t nonFinite(const float* samples, std::size_t count) {
  const hn::ScalableTag<float> d;
  const std::size_t lanes = hn::Lanes(d);
  const auto largest = hn::Set(d, 3.40282347e+38F);
  std::size_t finite = 0;
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes)
    finite += hn::CountTrue(d, hn::Le(hn::Abs(hn::LoadU(d, samples + i)), largest));
  for (; i < count; ++i) finite += std::isfinite(samples[i]) ? 1 : 0;
  return count - finite;
}

std::uint64_t loudSamples(const float* samples, std::size_t count, float threshold) {
  const hn::ScalableTag<float> d;
  const std::size_t lanes = hn::Lanes(d);
  const auto bound = hn::Set(d, threshold);
  std::uint64_t loud = 0;
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    std::uint8_t bits[8] = {};  // of up to 64 lanes, the lowest bit first
    hn::StoreMaskBits(d, hn::Ge(hn::Abs(hn::LoadU(d, samples + i)), bound), bits);
    for (std::size_t byte = 0; byte < (lanes + 7) / 8; ++byte)
      loud |= std::uint64_t{bits[byte]} << (i + 8 * byte);
  }
  for (; i < count; ++i) loud |= std::uint64_t{std::fabs(samples[i]) >= threshold} << i;
  return loud;
}

}  // namespace orvane::SignalKernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane::SignalKernels {

HWY_EXPORT(largestMagnitude);
HWY_EXPORT(runSums);
HWY_EXPORT(pairSums);
HWY_EXPORT(nonFinite);
HWY_EXPORT(loudSamples);

float maximumMagnitude(const float* samples, std::size_t count) noexcept {
  return HWY_DYNAMIC_DISPATCH(largestMagnitude)(samples, count);
}

RunStatistics runStatistics(const float* samples, std::size_t count) noexcept {
  RunStatistics result;
  HWY_DYNAMIC_DISPATCH(runSums)(samples, count, result);
  return result;
}

PairStatistics pairStatistics(const float* left, const float* right, std::size_t count) noexcept {
  PairStatistics result;
  HWY_DYNAMIC_DISPATCH(pairSums)(left, right, count, result);
  return result;
}

std::size_t countNonFinite(const float* samples, std::size_t count) noexcept {
  return HWY_DYNAMIC_DISPATCH(nonFinite)(samples, count);
}

std::uint64_t loudSamples(const float* samples, std::size_t count, float threshold) noexcept {
  return HWY_DYNAMIC_DISPATCH(loudSamples)(samples, count, threshold);
}

}  // namespace orvane::SignalKernels
#endif
