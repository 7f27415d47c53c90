// True-peak interpolation, compiled once per instruction set.
#include "orvane/core/peak/polyphase_upsampler.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/core/peak/polyphase_upsampler_kernel.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"         // must follow foreach_target.h

#include <array>
#include <cfloat>

#include "orvane/core/peak/polyphase_upsampler_taps.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::core::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

constexpr size_t kHistory = PolyphaseUpsampler4x::kHistory;
constexpr size_t kPeakHistory = PolyphaseUpsampler4x::kPeakHistory;

/// Samples that are passed over or interpolated together.
constexpr size_t kBlockFrames = 64;

/// Magnitudes compare like the bit patterns of their absolute values, and these order NaN and
/// infinity above every number, where a float comparison would lose them.
constexpr uint32_t kMagnitudeMask = 0x7FFFFFFF;
constexpr uint32_t kInfinityBits = 0x7F800000;

float FloatOfBits(uint32_t bits) {
  float value;
  hwy::CopyBytes<sizeof(value)>(&bits, &value);
  return value;
}

/// Bit pattern of the largest magnitude.
uint32_t MagnitudeBits(const float* samples, size_t count) {
  const hn::ScalableTag<uint32_t> d;
  const hn::RebindToFloat<decltype(d)> df;
  const auto mask = hn::Set(d, kMagnitudeMask);
  auto largest = hn::Zero(d);
  size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d))
    largest = hn::Max(largest, hn::And(mask, hn::BitCast(d, hn::LoadU(df, samples + i))));
  uint32_t result = hn::GetLane(hn::MaxOfLanes(d, largest));
  for (; i < count; ++i) {
    uint32_t bits;
    hwy::CopyBytes<sizeof(bits)>(samples + i, &bits);
    result = HWY_MAX(result, bits & kMagnitudeMask);
  }
  return result;
}

/// One filter over the windows that end at samples[0 … lanes − 1].
template <class D, size_t kTaps>
HWY_INLINE hn::Vec<D> Interpolate(D d, const float* samples, const std::array<float, kTaps>& taps) {
  const float* window = samples - (kTaps - 1);
  auto sum = hn::Mul(hn::Set(d, taps[0]), hn::LoadU(d, window));
  for (size_t tap = 1; tap < kTaps; ++tap)
    sum = hn::MulAdd(hn::Set(d, taps[tap]), hn::LoadU(d, window + tap), sum);
  return sum;
}

/// Largest value, in magnitude, that one filter gives over samples that are finite, as those that
/// its windows reach back to.
template <size_t kTaps>
float FilteredPeak(const float* samples, size_t count, const std::array<float, kTaps>& taps) {
  const hn::ScalableTag<float> wide;
  const hn::CappedTag<float, 1> single;
  auto largest = hn::Zero(wide);
  auto largestSingle = hn::Zero(single);
  size_t i = 0;
  for (; i + hn::Lanes(wide) <= count; i += hn::Lanes(wide))
    largest = hn::Max(largest, hn::Abs(Interpolate(wide, samples + i, taps)));
  for (; i < count; ++i)
    largestSingle = hn::Max(largestSingle, hn::Abs(Interpolate(single, samples + i, taps)));
  return HWY_MAX(hn::GetLane(hn::MaxOfLanes(wide, largest)), hn::GetLane(largestSingle));
}

float InterpolatedPeak(int factor, const float* samples, size_t count) {
  if (factor == 2) return FilteredPeak(samples, count, kHalfwayFilter);
  float largest = 0;
  for (const auto& taps : kUpsamplerFilters)
    largest = HWY_MAX(largest, FilteredPeak(samples, count, taps));
  return largest;
}

template <size_t kTaps>
constexpr float GainBound(const std::array<float, kTaps>& taps) {
  float sum = 0;
  for (const float tap : taps) sum += tap < 0 ? -tap : tap;
  return sum * 1.00001F;  // room for rounding
}

static_assert(GainBound(kUpsamplerFilters[1]) < PolyphaseUpsampler4x::kLargestGain);

/// What no interpolated value exceeds, of a window whose samples are at most m and whose second
/// differences, x[i − 1] − 2 x[i] + x[i + 1], at most c in magnitude: `ofSamples` · m, and
/// `ofLevel` · m + `ofCurvature` · c, which is far less for all but the highest frequencies.
///
/// The second one: a filter h with the sum S and its centre of gravity between the taps a and a + 1
/// is a linear interpolation between these two samples, with weights that are not negative and have
/// the sum S, and a remainder r, whose sum and first moment are 0. Such a remainder is the second
/// difference of a sequence g of the same support, less one tap at each end, so that Σ r x is
/// Σ g[i] (x[i − 1] − 2 x[i] + x[i + 1]). The first part is at most S m, the other one Σ |g| c.
struct PeakBound {
  float ofSamples = 0;
  float ofLevel = 0;
  float ofCurvature = 0;

  template <size_t kTaps>
  static constexpr PeakBound of(const std::array<float, kTaps>& taps) {
    double sum = 0, moment = 0;
    for (size_t i = 0; i < kTaps; ++i) {
      sum += taps[i];
      moment += static_cast<double>(i) * taps[i];
    }
    const double centre = moment / sum;
    const auto before = static_cast<size_t>(centre);
    double slope = 0, g = 0, curvature = 0;  // r summed once and twice
    for (size_t i = 0; i < kTaps; ++i) {
      curvature += g < 0 ? -g : g;
      slope += taps[i];
      if (i == before) slope -= sum * (static_cast<double>(before + 1) - centre);
      if (i == before + 1) slope -= sum * (centre - static_cast<double>(before));
      g += slope;
    }
    // Room for the rounding of the sums, of the second differences and of the bound.
    return {.ofSamples = GainBound(taps),
            .ofLevel = static_cast<float>(sum) * 1.0001F,
            .ofCurvature = static_cast<float>(curvature) * 1.0001F};
  }

  constexpr PeakBound joined(const PeakBound& other) const {
    return {.ofSamples = HWY_MAX(ofSamples, other.ofSamples),
            .ofLevel = HWY_MAX(ofLevel, other.ofLevel),
            .ofCurvature = HWY_MAX(ofCurvature, other.ofCurvature)};
  }
};

constexpr PeakBound kBoundOfTwo = PeakBound::of(kHalfwayFilter);
constexpr PeakBound kBoundOfFour = PeakBound::of(kUpsamplerFilters[0])
                                       .joined(PeakBound::of(kUpsamplerFilters[1]))
                                       .joined(PeakBound::of(kUpsamplerFilters[2]));

/// Largest magnitude of the second differences of `count` samples, which are finite.
float LargestCurvature(const float* samples, size_t count) {
  const hn::ScalableTag<float> wide;
  const hn::CappedTag<float, 1> single;
  const auto curvature = [samples](auto d, size_t i) {
    const auto neighbours = hn::Add(hn::LoadU(d, samples + i), hn::LoadU(d, samples + i + 2));
    const auto middle = hn::LoadU(d, samples + i + 1);
    return hn::Abs(hn::Sub(neighbours, hn::Add(middle, middle)));
  };
  auto largest = hn::Zero(wide);
  auto largestSingle = hn::Zero(single);
  size_t i = 0;
  for (; i + 2 + hn::Lanes(wide) <= count; i += hn::Lanes(wide))
    largest = hn::Max(largest, curvature(wide, i));
  for (; i + 2 < count; ++i) largestSingle = hn::Max(largestSingle, curvature(single, i));
  return HWY_MAX(hn::GetLane(hn::MaxOfLanes(wide, largest)), hn::GetLane(largestSingle));
}

/// Whether the windows that end in a block can exceed `largest`.
bool MayExceed(float largest, const PeakBound& bound, const float* block, size_t count,
               float windowPeak) {
  if (windowPeak * bound.ofSamples <= largest) return false;
  const float curvature = LargestCurvature(block - kPeakHistory, kPeakHistory + count);
  // Beyond the largest float the sums above mean nothing.
  const float peak = windowPeak * bound.ofLevel + curvature * bound.ofCurvature;
  return !(peak <= largest) || windowPeak > FLT_MAX / 4;
}

/// A block and the samples before it that windows reach back to, with 0 for those not finite.
struct CleanBlock {
  float samples[kPeakHistory + kBlockFrames];

  CleanBlock(const float* block, size_t count) {
    for (size_t i = 0; i < kPeakHistory + count; ++i) {
      const float x = (block - kPeakHistory)[i];
      samples[i] = x >= -FLT_MAX && x <= FLT_MAX ? x : 0.0F;
    }
  }
  const float* block() const { return samples + kPeakHistory; }
};

float LargestPeak(int factor, const float* samples, size_t frameCount, float floor) {
  if (frameCount == 0) return floor;  // then nothing before `samples` need be readable
  const PeakBound& bound = factor == 2 ? kBoundOfTwo : kBoundOfFour;
  float largest = floor;
  const auto measure = [&](const float* block, size_t count, uint32_t windowBits, uint32_t bits) {
    largest = HWY_MAX(largest, FloatOfBits(bits));
    if (factor != 1 && MayExceed(largest, bound, block, count, FloatOfBits(windowBits)))
      largest = HWY_MAX(largest, InterpolatedPeak(factor, block, count));
  };
  uint32_t before = MagnitudeBits(samples - kPeakHistory, kPeakHistory);
  for (size_t done = 0; done < frameCount; done += kBlockFrames) {
    const float* block = samples + done;
    const size_t count = HWY_MIN(kBlockFrames, frameCount - done);
    const uint32_t here = MagnitudeBits(block, count);
    const uint32_t window = HWY_MAX(before, here);
    before = here;
    if (window < kInfinityBits) {
      measure(block, count, window, here);
    } else {
      const CleanBlock clean(block, count);
      measure(clean.block(), count, MagnitudeBits(clean.samples, kPeakHistory + count),
              MagnitudeBits(clean.block(), count));
    }
  }
  return largest;
}

void DetectPerSamplePeaks(const float* work, size_t frameCount, float* peaks) {
  const auto detect = [work, peaks](auto d, size_t frame) {
    const float* samples = work + kHistory + frame;
    auto largest = hn::Abs(hn::LoadU(d, samples));
    for (const auto& taps : kUpsamplerFilters)
      largest = hn::Max(largest, hn::Abs(Interpolate(d, samples, taps)));
    hn::StoreU(largest, d, peaks + frame);
  };
  const hn::ScalableTag<float> wide;
  size_t frame = 0;
  for (; frame + hn::Lanes(wide) <= frameCount; frame += hn::Lanes(wide)) detect(wide, frame);
  for (; frame < frameCount; ++frame) detect(hn::CappedTag<float, 1>(), frame);
}

}  // namespace orvane::core::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane::core {

HWY_EXPORT(LargestPeak);
HWY_EXPORT(DetectPerSamplePeaks);

namespace PolyphaseUpsampler4x {

static_assert(kUpsamplerTaps <= kHistory + 1);
static_assert(kHalfwayTaps == kPeakHistory + 1 && kUpsamplerTaps <= kHalfwayTaps);

void detectPerSamplePeaks(const float* work, std::size_t frameCount, float* peaks) noexcept {
  HWY_DYNAMIC_DISPATCH(DetectPerSamplePeaks)(work, frameCount, peaks);
}

float largestPeak(Factor factor, const float* samples, std::size_t frameCount,
                  float floor) noexcept {
  return HWY_DYNAMIC_DISPATCH(LargestPeak)(static_cast<int>(factor), samples, frameCount, floor);
}

}  // namespace PolyphaseUpsampler4x
}  // namespace orvane::core
#endif
