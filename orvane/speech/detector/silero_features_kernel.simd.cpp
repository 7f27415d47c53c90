#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/speech/detector/silero_features_kernel.simd.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "orvane/speech/detector/silero_dense-inl.h"
#include "orvane/speech/detector/silero_fourier-inl.h"
#include "orvane/speech/detector/silero_layout.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::silero::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Samples of larger magnitude cannot be audio; a bound keeps every sum of the network finite.
constexpr float kLargestSample = 1e9F;

void sanitize(const float* samples, std::size_t count, float* destination) {
  const hn::ScalableTag<float> d;
  const std::size_t lanes = hn::Lanes(d);
  const auto bound = hn::Set(d, kLargestSample);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const auto x = hn::LoadU(d, samples + i);
    hn::StoreU(hn::IfThenElseZero(hn::Le(hn::Abs(x), bound), x), d, destination + i);
  }
  for (; i < count; ++i)
    destination[i] = samples[i] >= -kLargestSample && samples[i] <= kLargestSample ? samples[i] : 0;
}

/// Lays the tile's windows side by side, one step per lane.
#if HWY_TARGET == HWY_SCALAR
void transposeWindows(const float* HWY_RESTRICT samples, float* HWY_RESTRICT windows) {
  for (std::size_t step = 0; step < kTileSteps; ++step)
    for (std::size_t n = 0; n < kWindowSamples; ++n)
      windows[n * kTileSteps + step] = samples[step * kStepSamples + n];
}
#else
void transposeWindows(const float* HWY_RESTRICT samples, float* HWY_RESTRICT windows) {
  const hn::Full128<float> d;
  for (std::size_t step = 0; step < kTileSteps; step += 4) {
    const float* const source = samples + step * kStepSamples;
    for (std::size_t n = 0; n < kWindowSamples; n += 4) {
      const auto a = hn::LoadU(d, source + n);
      const auto b = hn::LoadU(d, source + n + kStepSamples);
      const auto c = hn::LoadU(d, source + n + 2 * kStepSamples);
      const auto e = hn::LoadU(d, source + n + 3 * kStepSamples);
      const auto lowAB = hn::InterleaveLower(d, a, b);
      const auto lowCE = hn::InterleaveLower(d, c, e);
      const auto highAB = hn::InterleaveUpper(d, a, b);
      const auto highCE = hn::InterleaveUpper(d, c, e);
      float* const rows = windows + n * kTileSteps + step;
      hn::Store(hn::ConcatLowerLower(d, lowCE, lowAB), d, rows);
      hn::Store(hn::ConcatUpperUpper(d, lowCE, lowAB), d, rows + kTileSteps);
      hn::Store(hn::ConcatLowerLower(d, highCE, highAB), d, rows + 2 * kTileSteps);
      hn::Store(hn::ConcatUpperUpper(d, highCE, highAB), d, rows + 3 * kTileSteps);
    }
  }
}
#endif

/// Repeats the windows' last samples in reverse behind them; the very last one is not repeated.
void mirrorWindows(float* windows) {
  for (std::size_t i = 0; i < kMirrorSamples; ++i)
    hwy::CopyBytes<kTileSteps * sizeof(float)>(windows + (kWindowSamples - 2 - i) * kTileSteps,
                                               windows + (kWindowSamples + i) * kTileSteps);
}

/// Magnitudes by a product with the model's own basis.
void multiplyBasis(const PackedWeights& weights, TileScratch& scratch) {
  const Lanes d;
  float* const product = scratch.transform.get();
  for (std::size_t frame = 0; frame < kFrameCount; ++frame) {
    const float* const input = scratch.windows.get() + frame * kFrameHop * kTileSteps;
    applyDense<false>(weights.basis, 0, kFrameSamples, input, product);
    float* const output = scratch.spectrum.get() + frame * kBinCount * kTileSteps;
    const float* const imaginary = product + kBinCount * kTileSteps;
    for (std::size_t i = 0; i < kBinCount * kTileSteps; i += hn::Lanes(d)) {
      const auto re = hn::Load(d, product + i);
      const auto im = hn::Load(d, imaginary + i);
      hn::Store(hn::Sqrt(hn::MulAdd(re, re, hn::Mul(im, im))), d, output + i);
    }
  }
}

void transformWindows(const PackedWeights& weights, TileScratch& scratch) {
  const Lanes d;
  for (std::size_t lane = 0; lane < kTileSteps; lane += hn::Lanes(d))
    for (std::size_t frame = 0; frame < kFrameCount; ++frame)
      fourierMagnitudes(
          weights.fourier, scratch.windows.get() + frame * kFrameHop * kTileSteps + lane,
          scratch.transform.get(), scratch.spectrum.get() + frame * kBinCount * kTileSteps + lane);
}

/// A convolution over time with kernel 3 and zero padding 1 inside each step: taps that would meet
/// the padding are left out. Gives the number of output positions.
std::size_t convolve(const DenseLayer& layer, std::size_t positions, std::size_t stride,
                     const float* input, float* output) {
  const std::size_t outputPositions = (positions - 1) / stride + 1;
  for (std::size_t t = 0; t < outputPositions; ++t) {
    const std::size_t center = t * stride;
    const std::size_t first = center == 0 ? 0 : center - 1;
    const std::size_t last = HWY_MIN(positions - 1, center + 1);
    applyDense<true>(layer, first + 1 - center, (last - first + 1) * layer.inputCount,
                     input + first * layer.inputCount * kTileSteps,
                     output + t * layer.outputCount * kTileSteps);
  }
  return outputPositions;
}

void computeTile(const PackedWeights& weights, TileScratch& scratch, float* gates) {
  transposeWindows(scratch.samples.get(), scratch.windows.get());
  mirrorWindows(scratch.windows.get());
  if (weights.usesFourierTransform) {
    transformWindows(weights, scratch);
  } else {
    multiplyBasis(weights, scratch);
  }
  // Samples and windows are spent: their memory takes the layers' outputs.
  float* const wide = scratch.samples.get();
  float* const narrow = scratch.windows.get();
  float* const last = scratch.spectrum.get();
  std::size_t positions =
      convolve(weights.encoder[0], kFrameCount, 1, scratch.spectrum.get(), wide);
  positions = convolve(weights.encoder[1], positions, 2, wide, narrow);
  positions = convolve(weights.encoder[2], positions, 2, narrow, wide);
  convolve(weights.encoder[3], positions, 1, wide, last);
  multiplyGates(weights, last, gates);
}

}  // namespace orvane::silero::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
#include <algorithm>

namespace orvane::silero {

HWY_EXPORT(sanitize);
HWY_EXPORT(computeTile);

void loadTile(const Signal& signal, std::size_t start, TileScratch& scratch) {
  float* destination = scratch.samples.get();
  float* const end = destination + kTileSamples;
  if (start == 0) {
    destination = std::fill_n(destination, kContextSamples, 0.0F);
  } else {
    start -= kContextSamples;
  }
  float last = 0;
  for (const auto part : {signal.first, signal.second}) {
    if (part.empty()) continue;
    const std::size_t skipped = std::min(start, part.size());
    const auto wanted = static_cast<std::size_t>(end - destination);
    const std::size_t count = std::min(wanted, part.size() - skipped);
    HWY_DYNAMIC_DISPATCH(sanitize)(part.data() + skipped, count, destination);
    HWY_DYNAMIC_DISPATCH(sanitize)(&part.back(), 1, &last);
    destination += count;
    start -= skipped;
  }
  std::fill(destination, end, last);
}

void computeTile(const PackedWeights& weights, TileScratch& scratch, float* gates) {
  HWY_DYNAMIC_DISPATCH(computeTile)(weights, scratch, gates);
}

}  // namespace orvane::silero
#endif  // HWY_ONCE
