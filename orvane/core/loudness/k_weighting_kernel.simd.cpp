// K-weighting of many signals side by side, compiled once per instruction set.
#include "orvane/core/loudness/k_weighting_kernel.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/core/loudness/k_weighting_kernel.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"         // must follow foreach_target.h

#include <cfloat>

HWY_BEFORE_NAMESPACE();
namespace orvane::core::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// Frames that are brought into lane order at a time; the tile stays in the first-level cache.
constexpr size_t kTileFrames = 64;

using Tile = float[kTileFrames][kKWeightingLanes];

/// tile[frame][lane … lane + 3] from four signals.
void TransposeFour(const float* const* lanes, size_t frames, size_t firstLane, Tile& tile) {
  size_t frame = 0;
#if HWY_TARGET != HWY_SCALAR
  const hn::FixedTag<float, 4> d;
  const auto d64 = hn::RepartitionToWide<decltype(d)>();
  for (; frame + 4 <= frames; frame += 4) {
    const auto a = hn::LoadU(d, lanes[0] + frame);
    const auto b = hn::LoadU(d, lanes[1] + frame);
    const auto c = hn::LoadU(d, lanes[2] + frame);
    const auto e = hn::LoadU(d, lanes[3] + frame);
    const auto abLow = hn::BitCast(d64, hn::InterleaveLower(d, a, b));
    const auto ceLow = hn::BitCast(d64, hn::InterleaveLower(d, c, e));
    const auto abHigh = hn::BitCast(d64, hn::InterleaveUpper(d, a, b));
    const auto ceHigh = hn::BitCast(d64, hn::InterleaveUpper(d, c, e));
    hn::Store(hn::BitCast(d, hn::InterleaveLower(d64, abLow, ceLow)), d, &tile[frame][firstLane]);
    hn::Store(hn::BitCast(d, hn::InterleaveUpper(d64, abLow, ceLow)), d,
              &tile[frame + 1][firstLane]);
    hn::Store(hn::BitCast(d, hn::InterleaveLower(d64, abHigh, ceHigh)), d,
              &tile[frame + 2][firstLane]);
    hn::Store(hn::BitCast(d, hn::InterleaveUpper(d64, abHigh, ceHigh)), d,
              &tile[frame + 3][firstLane]);
  }
#endif
  for (; frame < frames; ++frame)
    for (size_t lane = 0; lane < 4; ++lane) tile[frame][firstLane + lane] = lanes[lane][frame];
}

/// One vector of lanes on its way through both stages (transposed direct form II).
template <class D>
struct Filter {
  using V = hn::Vec<D>;
  V shelf1, shelf2, pass1, pass2, sum;

  HWY_INLINE void Load(D d, const KWeightingState& state, size_t lane, const double* sums) {
    shelf1 = hn::Load(d, &state.values[0][lane]);
    shelf2 = hn::Load(d, &state.values[1][lane]);
    pass1 = hn::Load(d, &state.values[2][lane]);
    pass2 = hn::Load(d, &state.values[3][lane]);
    sum = hn::Load(d, sums + lane);
  }

  HWY_INLINE void Store(D d, KWeightingState& state, size_t lane, double* sums) const {
    hn::Store(shelf1, d, &state.values[0][lane]);
    hn::Store(shelf2, d, &state.values[1][lane]);
    hn::Store(pass1, d, &state.values[2][lane]);
    hn::Store(pass2, d, &state.values[3][lane]);
    hn::Store(sum, d, sums + lane);
  }

  HWY_INLINE void Step(V x, V b0, V b1, V b2, V a1, V a2, V two, V p1, V p2) {
    const V y = hn::MulAdd(b0, x, shelf1);
    shelf1 = hn::NegMulAdd(a1, y, hn::MulAdd(b1, x, shelf2));
    shelf2 = hn::NegMulAdd(a2, y, hn::Mul(b2, x));
    const V z = hn::Add(y, pass1);
    pass1 = hn::NegMulAdd(p1, z, hn::NegMulAdd(two, y, pass2));
    pass2 = hn::NegMulAdd(p2, z, y);
    sum = hn::MulAdd(z, z, sum);
  }
};

/// Two vectors at once: one alone would wait for its own results.
void FilterTile(const KWeighting& k, const Tile& tile, size_t frames, size_t firstLane,
                KWeightingState& state, double* sums) {
  const hn::CappedTag<double, kKWeightingLanes / 2> d;
  const hn::Rebind<float, decltype(d)> df;
  const size_t lanes = hn::Lanes(d);
  const auto b0 = hn::Set(d, k.shelfB0), b1 = hn::Set(d, k.shelfB1), b2 = hn::Set(d, k.shelfB2);
  const auto a1 = hn::Set(d, k.shelfA1), a2 = hn::Set(d, k.shelfA2);
  const auto p1 = hn::Set(d, k.highPassA1), p2 = hn::Set(d, k.highPassA2);
  const auto two = hn::Set(d, 2.0);
  Filter<decltype(d)> first, second;
  first.Load(d, state, firstLane, sums);
  second.Load(d, state, firstLane + lanes, sums);
  for (size_t frame = 0; frame < frames; ++frame) {
    const float* row = &tile[frame][firstLane];
    first.Step(hn::PromoteTo(d, hn::Load(df, row)), b0, b1, b2, a1, a2, two, p1, p2);
    second.Step(hn::PromoteTo(d, hn::Load(df, row + lanes)), b0, b1, b2, a1, a2, two, p1, p2);
  }
  first.Store(d, state, firstLane, sums);
  second.Store(d, state, firstLane + lanes, sums);
}

/// Whether every lane's sum is a number: one non-finite sample makes its lane's sum NaN or
/// infinite, and nothing else does.
bool AllFinite(const double* sums, size_t laneCount) {
  double probe = 0;
  for (size_t lane = 0; lane < laneCount; ++lane) probe += sums[lane] * 0.0;
  return probe == 0.0;
}

void ReplaceNonFinite(Tile& tile, size_t frames, size_t laneCount) {
  for (size_t frame = 0; frame < frames; ++frame)
    for (size_t lane = 0; lane < laneCount; ++lane) {
      float& x = tile[frame][lane];
      if (!(x >= -FLT_MAX && x <= FLT_MAX)) x = 0.0F;
    }
}

void KWeightedSums(const KWeighting& coefficients, const float* const* lanes, size_t laneCount,
                   size_t frames, KWeightingState& state, double* sums) {
  static const float kSilence[kTileFrames] = {};
  const size_t lanesPerPass = 2 * hn::Lanes(hn::CappedTag<double, kKWeightingLanes / 2>());
  HWY_ALIGN double tileSums[kKWeightingLanes];
  HWY_ALIGN Tile tile;
  for (size_t done = 0; done < frames; done += kTileFrames) {
    const size_t count = HWY_MIN(kTileFrames, frames - done);
    for (size_t lane = 0; lane < laneCount; lane += 4) {
      const float* four[4];
      for (size_t i = 0; i < 4; ++i)
        four[i] =
            lane + i < laneCount && lanes[lane + i] != nullptr ? lanes[lane + i] + done : kSilence;
      TransposeFour(four, count, lane, tile);
    }
    // Lanes beyond those in use but within a pass of the filter must hold numbers.
    const size_t transposed = (laneCount + 3) / 4 * 4;
    const size_t filtered = (laneCount + lanesPerPass - 1) / lanesPerPass * lanesPerPass;
    for (size_t frame = 0; frame < count; ++frame)
      for (size_t lane = transposed; lane < filtered; ++lane) tile[frame][lane] = 0.0F;

    const KWeightingState before = state;
    const auto filter = [&] {
      for (size_t lane = 0; lane < laneCount; lane += lanesPerPass) {
        for (size_t i = 0; i < lanesPerPass; ++i) tileSums[lane + i] = 0.0;
        FilterTile(coefficients, tile, count, lane, state, tileSums);
      }
    };
    filter();
    if (!AllFinite(tileSums, laneCount)) {
      ReplaceNonFinite(tile, count, laneCount);
      state = before;
      filter();
    }
    for (size_t lane = 0; lane < laneCount; ++lane) sums[lane] += tileSums[lane];
  }
}

}  // namespace orvane::core::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane::core {

HWY_EXPORT(KWeightedSums);

void kWeightedSums(const KWeighting& coefficients, const float* const* lanes, std::size_t laneCount,
                   std::size_t frames, KWeightingState& state, double* sums) noexcept {
  HWY_DYNAMIC_DISPATCH(KWeightedSums)(coefficients, lanes, laneCount, frames, state, sums);
}

}  // namespace orvane::core
#endif
