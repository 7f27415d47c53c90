// Register-blocked matrix products of the network; compiled once per instruction set.

#if defined(ORVANE_SPEECH_SILERO_DENSE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_SPEECH_SILERO_DENSE_INL_H_
#undef ORVANE_SPEECH_SILERO_DENSE_INL_H_
#else
#define ORVANE_SPEECH_SILERO_DENSE_INL_H_
#endif

#include <hwy/highway.h>

#include "orvane/speech/detector/silero_layout.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::silero::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Lanes = hn::CappedTag<float, kUnitGroup>;
using Vector = hn::Vec<Lanes>;
constexpr std::size_t kLanes = hn::MaxLanes(Lanes());

// Sums that fit the machine's vector registers beside the operands: 24 of 32, or 12 of 16.
#if HWY_TARGET <= HWY_AVX3 || HWY_ARCH_ARM_A64
constexpr std::size_t kBlockRows = 8;
constexpr std::size_t kGateVectors = 4;
#else
constexpr std::size_t kBlockRows = 4;
constexpr std::size_t kGateVectors = 2;
#endif
constexpr std::size_t kBlockVectors = 3;
constexpr std::size_t kGateRows = 6;

static_assert(kTileSteps % (kBlockVectors * kLanes) == 0 && kTileSteps % kGateRows == 0);
static_assert(kRowGroup % kBlockRows == 0 && kGroupGates % (kGateVectors * kLanes) == 0);

/// sums[r][v] += Σ over k of rows[k × rowStride + r] × columns[k × columnStride + v × lanes …].
template <std::size_t kRows, std::size_t kVectors>
HWY_INLINE void accumulate(const float* HWY_RESTRICT rows, std::size_t rowStride,
                           const float* HWY_RESTRICT columns, std::size_t columnStride,
                           std::size_t depth, Vector (&sums)[kRows][kVectors]) {
  const Lanes d;
  for (std::size_t k = 0; k < depth; ++k) {
    Vector column[kVectors];
    HWY_UNROLL(4)
    for (std::size_t v = 0; v < kVectors; ++v) column[v] = hn::Load(d, columns + v * kLanes);
    HWY_UNROLL(8)
    for (std::size_t r = 0; r < kRows; ++r) {
      const Vector row = hn::Set(d, rows[r]);
      HWY_UNROLL(4)
      for (std::size_t v = 0; v < kVectors; ++v)
        sums[r][v] = hn::MulAdd(row, column[v], sums[r][v]);
    }
    rows += rowStride;
    columns += columnStride;
  }
}

/// Applies a dense layer to `depth` input rows, beginning with the weights of `firstTap`.
template <bool kRectify>
HWY_INLINE void applyDense(const DenseLayer& layer, std::size_t firstTap, std::size_t depth,
                           const float* HWY_RESTRICT input, float* HWY_RESTRICT output) {
  const Lanes d;
  // The lanes outside: the part of the input that they read stays in the first-level cache.
  for (std::size_t lane = 0; lane < kTileSteps; lane += kBlockVectors * kLanes) {
    for (std::size_t row = 0; row < layer.outputCount; row += kBlockRows) {
      const std::size_t group = row / kRowGroup;
      const float* const weights =
          layer.weights.get() + row % kRowGroup +
          (group * layer.tapCount + firstTap) * layer.inputCount * kRowGroup;
      Vector sums[kBlockRows][kBlockVectors];
      HWY_UNROLL(8)
      for (std::size_t r = 0; r < kBlockRows; ++r) {
        HWY_UNROLL(4)
        for (std::size_t v = 0; v < kBlockVectors; ++v)
          sums[r][v] = hn::Set(d, layer.bias[row + r]);
      }
      accumulate(weights, kRowGroup, input + lane, kTileSteps, depth, sums);
      HWY_UNROLL(8)
      for (std::size_t r = 0; r < kBlockRows; ++r) {
        HWY_UNROLL(4)
        for (std::size_t v = 0; v < kBlockVectors; ++v) {
          const Vector sum = kRectify ? hn::Max(sums[r][v], hn::Zero(d)) : sums[r][v];
          hn::Store(sum, d, output + (row + r) * kTileSteps + lane + v * kLanes);
        }
      }
    }
  }
}

/// The gates' sums without their recurrent part, turned to one row per step.
HWY_INLINE void multiplyGates(const PackedWeights& weights, const float* HWY_RESTRICT input,
                              float* HWY_RESTRICT gates) {
  const Lanes d;
  constexpr std::size_t kBlockGates = kGateVectors * kLanes;
  for (std::size_t gate = 0; gate < kGateSize; gate += kBlockGates) {
    const float* const columns = weights.inputWeights.get() +
                                 gate / kGroupGates * kGroupGates * kHiddenSize +
                                 gate % kGroupGates;
    for (std::size_t step = 0; step < kTileSteps; step += kGateRows) {
      Vector sums[kGateRows][kGateVectors];
      HWY_UNROLL(8)
      for (std::size_t r = 0; r < kGateRows; ++r) {
        HWY_UNROLL(4)
        for (std::size_t v = 0; v < kGateVectors; ++v)
          sums[r][v] = hn::Load(d, weights.gateBias.get() + gate + v * kLanes);
      }
      accumulate(input + step, kTileSteps, columns, kGroupGates, kHiddenSize, sums);
      HWY_UNROLL(8)
      for (std::size_t r = 0; r < kGateRows; ++r) {
        HWY_UNROLL(4)
        for (std::size_t v = 0; v < kGateVectors; ++v)
          hn::Store(sums[r][v], d, gates + (step + r) * kGateSize + gate + v * kLanes);
      }
    }
  }
}

}  // namespace orvane::silero::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
