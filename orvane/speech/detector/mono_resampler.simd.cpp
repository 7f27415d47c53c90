#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/speech/detector/mono_resampler.simd.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "orvane/platform/parallel.h"
#include "orvane/speech/detector/mono_resampler.h"

#ifndef ORVANE_SPEECH_MONO_RESAMPLER_PIECE
#define ORVANE_SPEECH_MONO_RESAMPLER_PIECE
namespace orvane::mono_resampler {

/// Mixed samples around a run of output samples, and one more behind them.
struct Piece {
  const float* samples;
  std::int64_t firstFrame;  ///< frame of samples[0]
  double lastSourceFrame;   ///< of the whole source
};

}  // namespace orvane::mono_resampler
#endif

HWY_BEFORE_NAMESPACE();
namespace orvane::mono_resampler::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// output[i] = samples[i] × scale, or that added to what is there.
template <bool kAdds>
HWY_INLINE void addScaled(const float* HWY_RESTRICT samples, std::size_t count, float scale,
                          float* HWY_RESTRICT output) {
  const hn::ScalableTag<float> d;
  const std::size_t lanes = hn::Lanes(d);
  const auto factor = hn::Set(d, scale);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const auto scaled = hn::Mul(hn::LoadU(d, samples + i), factor);
    hn::StoreU(kAdds ? hn::Add(scaled, hn::LoadU(d, output + i)) : scaled, d, output + i);
  }
  for (; i < count; ++i) output[i] = kAdds ? output[i] + samples[i] * scale : samples[i] * scale;
}

void mix(const PlanarView& audio, std::int64_t offset, std::size_t count,
         float* HWY_RESTRICT output) {
  const float scale = 1.0F / static_cast<float>(audio.channelCount());
  addScaled<false>(audio.channel(0) + offset, count, scale, output);
  for (std::size_t c = 1; c < audio.channelCount(); ++c)
    addScaled<true>(audio.channel(c) + offset, count, scale, output);
}

/// Between a and b.
HWY_INLINE float between(float a, float b, float fraction) {
  return a + (b - a) * fraction;
}

void interpolate(const Piece& piece, double ratio, std::int64_t start, std::int64_t end,
                 float* HWY_RESTRICT output) {
  const hn::ScalableTag<double> d;
  const hn::Rebind<float, decltype(d)> df;
  const hn::Rebind<std::int32_t, decltype(d)> di;
  const auto lanes = static_cast<std::int64_t>(hn::Lanes(d));
  const auto firstFrame = static_cast<double>(piece.firstFrame);
  std::int64_t i = start;
  for (; i + lanes <= end; i += lanes) {
    const auto position = hn::Mul(hn::Iota(d, static_cast<double>(i)), hn::Set(d, ratio));
    const auto whole = hn::Min(hn::Trunc(position), hn::Set(d, piece.lastSourceFrame));
    const auto fraction = hn::DemoteTo(df, hn::Sub(position, whole));
    const auto index = hn::DemoteTo(di, hn::Sub(whole, hn::Set(d, firstFrame)));
    const auto a = hn::GatherIndex(df, piece.samples, index);
    const auto b = hn::GatherIndex(df, piece.samples + 1, index);
    hn::StoreU(hn::Add(a, hn::Mul(hn::Sub(b, a), fraction)), df, output + (i - start));
  }
  for (; i < end; ++i) {
    const double position = static_cast<double>(i) * ratio;
    const double floor = static_cast<double>(static_cast<std::int64_t>(position));
    const double whole = HWY_MIN(floor, piece.lastSourceFrame);
    const float* const near = piece.samples + static_cast<std::int64_t>(whole - firstFrame);
    output[i - start] = between(near[0], near[1], static_cast<float>(position - whole));
  }
}

/// The same for whole ratios, where every position is a frame.
void decimate(const Piece& piece, std::int64_t ratio, std::int64_t count,
              float* HWY_RESTRICT output) {
  const float* near = piece.samples;
  for (std::int64_t i = 0; i < count; ++i, near += ratio)
    output[i] = between(near[0], near[1], 0.0F);
}

/// Every `kRatio`th sample, and those behind them.
template <std::int64_t kRatio, class D, class V = hn::Vec<D>>
HWY_INLINE void loadEvery(D d, const float* samples, V& near, V& next) {
  V third;
  V fourth;
  if constexpr (kRatio == 2) hn::LoadInterleaved2(d, samples, near, next);
  if constexpr (kRatio == 3) hn::LoadInterleaved3(d, samples, near, next, third);
  if constexpr (kRatio == 4) hn::LoadInterleaved4(d, samples, near, next, third, fourth);
}

/// Mixes and decimates at once, without those samples in between, from frame `offset` of the audio
/// on; gives how many output samples it made: whole vectors, of `count` at most.
template <std::int64_t kRatio>
HWY_INLINE std::int64_t decimateMix(const PlanarView& audio, std::int64_t offset,
                                    std::int64_t count, float* HWY_RESTRICT output) {
  const hn::ScalableTag<float> d;
  const auto lanes = static_cast<std::int64_t>(hn::Lanes(d));
  const auto scale = hn::Set(d, 1.0F / static_cast<float>(audio.channelCount()));
  // What lies behind the last whole run of frames is not to be read.
  const std::int64_t whole =
      std::min(count, (static_cast<std::int64_t>(audio.frameCount()) - offset) / kRatio) / lanes;
  for (std::int64_t i = 0; i < whole * lanes; i += lanes) {
    auto near = hn::Zero(d);
    auto next = hn::Zero(d);
    loadEvery<kRatio>(d, audio.channel(0) + offset + i * kRatio, near, next);
    near = hn::Mul(near, scale);
    next = hn::Mul(next, scale);
    for (std::size_t c = 1; c < audio.channelCount(); ++c) {
      auto otherNear = hn::Zero(d);
      auto otherNext = hn::Zero(d);
      loadEvery<kRatio>(d, audio.channel(c) + offset + i * kRatio, otherNear, otherNext);
      near = hn::Add(hn::Mul(otherNear, scale), near);
      next = hn::Add(hn::Mul(otherNext, scale), next);
    }
    hn::StoreU(hn::Add(near, hn::Mul(hn::Sub(next, near), hn::Zero(d))), d, output + i);
  }
  return whole * lanes;
}

/// The same for 32, 48 and 64 kHz, of which whole vectors are loaded taken apart; 0 for others.
std::int64_t decimateMixByRatio(const PlanarView& audio, double ratio, std::int64_t offset,
                                std::int64_t count, float* HWY_RESTRICT output) {
  if (ratio == 2) return decimateMix<2>(audio, offset, count, output);
  if (ratio == 3) return decimateMix<3>(audio, offset, count, output);
  if (ratio == 4) return decimateMix<4>(audio, offset, count, output);
  return 0;
}

}  // namespace orvane::mono_resampler::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane {
namespace mono_resampler {

HWY_EXPORT(mix);
HWY_EXPORT(interpolate);
HWY_EXPORT(decimate);
HWY_EXPORT(decimateMixByRatio);

/// Mixed samples that are kept at once: half of a small first-level cache.
constexpr std::int64_t kPieceFrames = 4096;

/// Output samples that a thread makes at a time.
constexpr std::int64_t kShareSamples = 65536;

/// Output samples `start` … `end` − 1 on this thread.
void runHere(const MonoResampler& source, std::int64_t start, std::int64_t end, float* output) {
  const PlanarView audio = source.audio;
  const double ratio = source.ratio;
  const std::int64_t firstFrame = source.firstFrame;
  if (ratio == 1) {
    HWY_DYNAMIC_DISPATCH(mix)
    (audio, start - firstFrame, static_cast<std::size_t>(end - start), output);
    return;
  }
  const std::int64_t lastFrame = source.frameCount - 1;
  const auto frameAt = [&](std::int64_t i) {
    return std::min(lastFrame, static_cast<std::int64_t>(ratio * static_cast<double>(i)));
  };
  const std::int64_t made = HWY_DYNAMIC_DISPATCH(decimateMixByRatio)(
      audio, ratio, frameAt(start) - firstFrame, end - start, output);
  start += made;
  output += made;
  const bool isWhole = ratio >= 1 && ratio <= static_cast<double>(kPieceFrames) &&
                       ratio == static_cast<double>(static_cast<std::int64_t>(ratio));
  // A piece of n output samples needs no more than n × ratio + 2 frames.
  const auto pieceSamples = static_cast<std::int64_t>(
      std::clamp<double>((kPieceFrames - 2) / ratio, 1, static_cast<double>(kPieceFrames)));
  alignas(64) float mixed[kPieceFrames + 1];
  for (std::int64_t i = start; i < end; i += pieceSamples) {
    const std::int64_t pieceEnd = std::min(i + pieceSamples, end);
    const std::int64_t first = frameAt(i);
    const std::int64_t count = std::min(lastFrame, frameAt(pieceEnd - 1) + 1) - first + 1;
    HWY_DYNAMIC_DISPATCH(mix)
    (audio, first - firstFrame, static_cast<std::size_t>(count), mixed);
    mixed[count] = mixed[count - 1];  // the frame after the source's last one is that one
    const Piece piece{mixed, first, static_cast<double>(lastFrame)};
    float* const pieceOutput = output + (i - start);
    if (isWhole) {
      HWY_DYNAMIC_DISPATCH(decimate)
      (piece, static_cast<std::int64_t>(ratio), pieceEnd - i, pieceOutput);
    } else {
      HWY_DYNAMIC_DISPATCH(interpolate)(piece, ratio, i, pieceEnd, pieceOutput);
    }
  }
}

}  // namespace mono_resampler

void MonoResampler::run(std::int64_t start, std::int64_t end, float* output,
                        std::size_t threadCount) const {
  using mono_resampler::kShareSamples;
  const std::int64_t shares = (end - start + kShareSamples - 1) / kShareSamples;
  parallelFor(threadCount, static_cast<std::size_t>(shares), [&](std::size_t share) {
    const std::int64_t first = start + static_cast<std::int64_t>(share) * kShareSamples;
    mono_resampler::runHere(*this, first, std::min(first + kShareSamples, end),
                            output + (first - start));
  });
}

}  // namespace orvane
#endif  // HWY_ONCE
