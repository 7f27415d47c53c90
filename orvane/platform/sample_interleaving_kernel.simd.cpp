// Floats to linear-PCM samples, compiled once per instruction set by Highway.
#include "orvane/platform/sample_conversion.h"

#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/platform/sample_interleaving_kernel.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
// After foreach_target.h.
#include "hwy/highway.h"
#include "orvane/platform/plain_sample_conversion.h"
#include "orvane/platform/sample_stores-inl.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

/// `count` floats to neighbouring samples of one encoding.
template <class S>
void storeRun(const float* source, std::size_t count, std::uint8_t* destination,
              SampleLosses& losses) {
  const DF d;
  std::size_t i = 0;
  for (; i + kLanes <= count; i += kLanes)
    S::store(hn::LoadU(d, source + i), destination + i * S::kBytes, losses);
  if (i == count) return;
  // The lanes behind the last sample are 0, which every encoding holds.
  HWY_ALIGN float floats[kLanes] = {};
  std::uint8_t bytes[kLanes * 8];
  std::memcpy(floats, source + i, (count - i) * sizeof(float));
  S::store(hn::Load(d, floats), bytes, losses);
  std::memcpy(destination + i * S::kBytes, bytes, (count - i) * S::kBytes);
}

/// Two channels sample by sample.
inline void joinPairs(const float* left, const float* right, std::size_t frames, float* tile) {
  const DF d;
  std::size_t i = 0;
  for (; i + kLanes <= frames; i += kLanes)
    hn::StoreInterleaved2(hn::LoadU(d, left + i), hn::LoadU(d, right + i), d, tile + 2 * i);
  for (; i < frames; ++i) {
    tile[2 * i] = left[i];
    tile[2 * i + 1] = right[i];
  }
}

/// Four channels from `channel` on to the columns from `channel` on of rows as wide as there are
/// channels.
inline void joinFour(const PlanarView& source, std::size_t channel, float* tile) {
  const hn::CappedTag<float, 4> d;
  const std::size_t width = source.channelCount();
  const float* const from[4] = {source.channel(channel), source.channel(channel + 1),
                                source.channel(channel + 2), source.channel(channel + 3)};
  float* row = tile + channel;
  std::size_t i = 0;
  for (; i + 4 <= source.frameCount(); i += 4, row += 4 * width) {
    const auto a = hn::LoadU(d, from[0] + i);
    const auto b = hn::LoadU(d, from[1] + i);
    const auto e = hn::LoadU(d, from[2] + i);
    const auto f = hn::LoadU(d, from[3] + i);
    const auto abLower = hn::InterleaveLower(d, a, b);  // a0 b0 a1 b1
    const auto efLower = hn::InterleaveLower(d, e, f);
    const auto abUpper = hn::InterleaveUpper(d, a, b);
    const auto efUpper = hn::InterleaveUpper(d, e, f);
    hn::StoreU(hn::ConcatLowerLower(d, efLower, abLower), d, row);
    hn::StoreU(hn::ConcatUpperUpper(d, efLower, abLower), d, row + width);
    hn::StoreU(hn::ConcatLowerLower(d, efUpper, abUpper), d, row + 2 * width);
    hn::StoreU(hn::ConcatUpperUpper(d, efUpper, abUpper), d, row + 3 * width);
  }
  for (; i < source.frameCount(); ++i, row += width)
    for (std::size_t c = 0; c < 4; ++c) row[c] = from[c][i];
}

/// Any number of channels, as rows of a tile.
inline void joinChannels(const PlanarView& source, float* tile) {
  const std::size_t width = source.channelCount();
  std::size_t channel = 0;
  for (; channel + 4 <= width; channel += 4) joinFour(source, channel, tile);
  for (; channel < width; ++channel) {
    const float* const samples = source.channel(channel);
    for (std::size_t i = 0; i < source.frameCount(); ++i) tile[i * width + channel] = samples[i];
  }
}

struct Interleave {
  const PlanarView& source;
  std::uint8_t* destination;
  SampleLosses& losses;

  /// Tiles that stay in the first-level cache are put in stored order, then converted.
  template <class S>
  void run() const {
    constexpr std::size_t kTileFloats = 4096;
    const std::size_t channels = source.channelCount();
    if (channels == 1) {
      storeRun<S>(source.channel(0), source.frameCount(), destination, losses);
      return;
    }
    HWY_ALIGN float tile[kTileFloats];
    const std::size_t tileFrames = kTileFloats / channels;
    for (std::size_t begin = 0; begin < source.frameCount(); begin += tileFrames) {
      const std::size_t frames = HWY_MIN(tileFrames, source.frameCount() - begin);
      const PlanarView part = source.slice(begin, frames);
      if (channels == 2)
        joinPairs(part.channel(0), part.channel(1), frames, tile);
      else
        joinChannels(part, tile);
      storeRun<S>(tile, frames * channels, destination + begin * channels * S::kBytes, losses);
    }
  }
};

/// Runs the action for the vectors' writer of an encoding; false where there is none.
template <bool kBig, class Action>
bool withWriter(SampleEncoding encoding, const Action& action) {
  using Kind = SampleEncoding::Kind;
  const auto run = [&]<class Stores>() {
    action.template run<Stores>();
    return true;
  };
  if (encoding.kind == Kind::floatingPoint)
    return encoding.bytes == 4 ? run.template operator()<Float32Stores<kBig>>()
                               : run.template operator()<Float64Stores<kBig>>();
  if (encoding.bits != 8 * encoding.bytes) return false;
  if (encoding.bytes == 1)
    return encoding.kind == Kind::unsignedInteger ? run.template operator()<Int8Stores<true>>()
                                                  : run.template operator()<Int8Stores<false>>();
  if (encoding.kind == Kind::unsignedInteger) return false;
  switch (encoding.bytes) {
    case 2:
      return run.template operator()<Int16Stores<kBig>>();
    case 3:
      return run.template operator()<Int24Stores<kBig>>();
    case 4:
      return run.template operator()<Int32Stores<kBig>>();
    default:
      return false;
  }
}

SampleLosses interleaveSamples(SampleEncoding encoding, const PlanarView& source,
                               std::uint8_t* destination) {
  SampleLosses losses;
  const Interleave action{source, destination, losses};
  // A frame of more channels than a tile has room for goes without vectors.
  constexpr std::size_t kMostChannels = 1024;
  const bool isDone = source.channelCount() <= kMostChannels &&
                      (encoding.isBigEndian ? withWriter<true>(encoding, action)
                                            : withWriter<false>(encoding, action));
  return isDone ? losses : PlainSampleConversion::interleave(encoding, source, destination);
}

#else

SampleLosses interleaveSamples(SampleEncoding encoding, const PlanarView& source,
                               std::uint8_t* destination) {
  return PlainSampleConversion::interleave(encoding, source, destination);
}

#endif  // without vectors

}  // namespace orvane::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane {

HWY_EXPORT(interleaveSamples);

SampleLosses interleaveFromFloat(SampleEncoding encoding, PlanarView source,
                                 std::byte* destination) noexcept {
  return HWY_DYNAMIC_DISPATCH(interleaveSamples)(encoding, source,
                                                 reinterpret_cast<std::uint8_t*>(destination));
}

SampleLosses interleaveDithered(SampleEncoding encoding, PlanarView source, TPDFDither dither,
                                std::byte* destination) noexcept {
  return PlainSampleConversion::interleave(encoding, source,
                                           reinterpret_cast<std::uint8_t*>(destination), &dither);
}

}  // namespace orvane
#endif
