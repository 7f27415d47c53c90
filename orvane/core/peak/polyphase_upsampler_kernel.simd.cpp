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

/// The most by which a factor's filters can exceed the largest sample they see.
float LargestGain(int factor) {
  if (factor == 2) return GainBound(kHalfwayFilter);
  float largest = 0;
  for (const auto& taps : kUpsamplerFilters) largest = HWY_MAX(largest, GainBound(taps));
  return largest;
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
  const float largestGain = LargestGain(factor);
  float largest = floor;
  const auto measure = [&](const float* block, size_t count, uint32_t windowBits, uint32_t bits) {
    largest = HWY_MAX(largest, FloatOfBits(bits));
    if (factor != 1 && FloatOfBits(windowBits) * largestGain > largest)
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
