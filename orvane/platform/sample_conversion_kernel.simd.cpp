// Linear-PCM samples to float, compiled once per instruction set by Highway.
#include "orvane/platform/sample_conversion.h"

#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/platform/sample_conversion_kernel.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
// After foreach_target.h.
#include "hwy/highway.h"
#include "orvane/platform/plain_sample_conversion.h"
#include "orvane/platform/sample_loads-inl.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128

/// `count` neighbouring samples of one encoding.
template <class S>
void convertRun(const std::uint8_t* source, std::size_t count, float* destination) {
  const DF d;
  std::size_t i = 0;
  for (; (count - i) * S::kBytes >= S::kReach; i += kLanes)
    hn::StoreU(S::load(source + i * S::kBytes), d, destination + i);
  // Where a whole load would leave the source, the rest goes through a copy with room behind it.
  while (i < count) {
    const std::size_t rest = HWY_MIN(count - i, kLanes);
    HWY_ALIGN std::uint8_t bytes[kLanes * 8] = {};
    HWY_ALIGN float floats[kLanes];
    std::memcpy(bytes, source + i * S::kBytes, rest * S::kBytes);
    hn::Store(S::load(bytes), d, floats);
    std::memcpy(destination + i, floats, rest * sizeof(float));
    i += rest;
  }
}

/// Neighbouring samples in turn to two destinations.
template <class S>
void splitPairs(const std::uint8_t* source, std::size_t frames, float* left, float* right) {
  const DF d;
  std::size_t i = 0;
  for (; (frames - i) * 2 * S::kBytes >= S::kPairReach; i += kLanes) {
    VF even;
    VF odd;
    S::loadPair(source + i * 2 * S::kBytes, even, odd);
    hn::StoreU(even, d, left + i);
    hn::StoreU(odd, d, right + i);
  }
  while (i < frames) {
    const std::size_t rest = HWY_MIN(frames - i, kLanes);
    float floats[kLanes * 2];
    convertRun<S>(source + i * 2 * S::kBytes, rest * 2, floats);
    for (std::size_t k = 0; k < rest; ++k) {
      left[i + k] = floats[2 * k];
      right[i + k] = floats[2 * k + 1];
    }
    i += rest;
  }
}

/// Columns first … first + columns − 1 (columns at most 4) of a tile of floats, rows of `width`, to
/// as many channels from `channel` on. Reads up to 3 floats behind the tile.
inline void transposeColumns(const float* tile, std::size_t width, std::size_t first,
                             std::size_t columns, const MutablePlanarView& destination,
                             std::size_t channel) {
  const std::size_t frames = destination.frameCount();
  float* to[4];
  for (std::size_t c = 0; c < columns; ++c) to[c] = destination.channel(channel + c);
  const hn::CappedTag<float, 4> d;
  std::size_t i = 0;
  for (; i + 4 <= frames; i += 4) {
    const float* row = tile + i * width + first;
    const auto a = hn::LoadU(d, row);
    const auto b = hn::LoadU(d, row + width);
    const auto e = hn::LoadU(d, row + 2 * width);
    const auto f = hn::LoadU(d, row + 3 * width);
    const auto abLower = hn::InterleaveLower(d, a, b);  // a0 b0 a1 b1
    const auto efLower = hn::InterleaveLower(d, e, f);
    const auto abUpper = hn::InterleaveUpper(d, a, b);
    const auto efUpper = hn::InterleaveUpper(d, e, f);
    // A 64-bit half holds two rows of one column.
    hn::StoreU(hn::ConcatLowerLower(d, efLower, abLower), d, to[0] + i);
    if (columns > 1) hn::StoreU(hn::ConcatUpperUpper(d, efLower, abLower), d, to[1] + i);
    if (columns > 2) hn::StoreU(hn::ConcatLowerLower(d, efUpper, abUpper), d, to[2] + i);
    if (columns > 3) hn::StoreU(hn::ConcatUpperUpper(d, efUpper, abUpper), d, to[3] + i);
  }
  for (; i < frames; ++i)
    for (std::size_t c = 0; c < columns; ++c) to[c][i] = tile[i * width + first + c];
}

/// Any number of channels: tiles that stay in the first-level cache are converted in stored order,
/// then turned.
template <class S>
void splitFrames(const std::uint8_t* source, const MutablePlanarView& destination) {
  constexpr std::size_t kTileFloats = 8192;
  constexpr std::size_t kMaximumWidth = 64;
  HWY_ALIGN float tile[kTileFloats + 4];
  const std::size_t frames = destination.frameCount();
  const std::size_t channels = destination.channelCount();
  const std::size_t frameBytes = channels * S::kBytes;
  const std::size_t width = HWY_MIN(channels, kMaximumWidth);
  const std::size_t tileFrames = kTileFloats / width / 4 * 4;
  for (std::size_t begin = 0; begin < frames; begin += tileFrames) {
    const std::size_t rows = HWY_MIN(tileFrames, frames - begin);
    for (std::size_t group = 0; group < channels; group += width) {
      const std::size_t columns = HWY_MIN(width, channels - group);
      const std::uint8_t* start = source + begin * frameBytes + group * S::kBytes;
      if (width == channels) {
        convertRun<S>(start, rows * channels, tile);
      } else {
        for (std::size_t row = 0; row < rows; ++row)
          convertRun<S>(start + row * frameBytes, columns, tile + row * columns);
      }
      std::memset(tile + rows * columns, 0, 4 * sizeof(float));
      for (std::size_t c = 0; c < columns; c += 4)
        transposeColumns(tile, columns, c, HWY_MIN(std::size_t{4}, columns - c),
                         destination.slice(begin, rows), group + c);
    }
  }
}

/// Samples at a distance from each other.
template <class S>
void convertStrided(const std::uint8_t* source, std::size_t strideBytes, std::size_t count,
                    float* destination) {
  constexpr std::size_t kBlock = 512;
  std::uint8_t compact[kBlock * S::kBytes];
  for (std::size_t begin = 0; begin < count; begin += kBlock) {
    const std::size_t block = HWY_MIN(kBlock, count - begin);
    for (std::size_t i = 0; i < block; ++i)
      std::memcpy(compact + i * S::kBytes, source + (begin + i) * strideBytes, S::kBytes);
    convertRun<S>(compact, block, destination + begin);
  }
}

struct Convert {
  const std::uint8_t* source;
  std::size_t strideSamples;
  std::size_t count;
  float* destination;

  template <class S>
  void run() const {
    if (strideSamples == 1) {
      convertRun<S>(source, count, destination);
    } else {
      convertStrided<S>(source, strideSamples * S::kBytes, count, destination);
    }
  }
};

struct Deinterleave {
  const std::uint8_t* source;
  const MutablePlanarView& destination;

  template <class S>
  void run() const {
    const std::size_t frames = destination.frameCount();
    if (destination.channelCount() == 1) {
      convertRun<S>(source, frames, destination.channel(0));
    } else if (destination.channelCount() == 2) {
      splitPairs<S>(source, frames, destination.channel(0), destination.channel(1));
    } else if (destination.channelCount() > 2) {
      splitFrames<S>(source, destination);
    }
  }
};

/// Runs the action for the vectors' reader of an encoding; false where there is none.
template <bool kBig, class Action>
bool withReader(SampleEncoding encoding, const Action& action) {
  using Kind = SampleEncoding::Kind;
  const auto run = [&]<class Samples>() {
    action.template run<Samples>();
    return true;
  };
  if (encoding.kind == Kind::floatingPoint)
    return encoding.bytes == 4 ? run.template operator()<Word32Samples<Word32::float32, kBig>>()
                               : run.template operator()<Float64Samples<kBig>>();
  if (encoding.isLowAligned)
    return encoding == SampleEncoding::low24In32(kBig) &&
           run.template operator()<Word32Samples<Word32::low24, kBig>>();
  const bool isUnsigned = encoding.kind == Kind::unsignedInteger;
  if (encoding.bytes == 1)
    return isUnsigned ? run.template operator()<Int8Samples<true>>()
                      : run.template operator()<Int8Samples<false>>();
  if (isUnsigned) return false;
  switch (encoding.bytes) {
    case 2:
      return run.template operator()<Int16Samples<kBig>>();
    case 3:
      return run.template operator()<Int24Samples<kBig>>();
    case 4:
      return run.template operator()<Word32Samples<Word32::int32, kBig>>();
    default:
      return false;
  }
}

template <class Action>
bool withReaderOf(SampleEncoding encoding, const Action& action) {
  return encoding.isBigEndian ? withReader<true>(encoding, action)
                              : withReader<false>(encoding, action);
}

void convertSamples(SampleEncoding encoding, const std::uint8_t* source, std::size_t strideSamples,
                    std::size_t count, float* destination) {
  if (!withReaderOf(encoding, Convert{source, strideSamples, count, destination}))
    PlainSampleConversion::convert(encoding, source, strideSamples, count, destination);
}

void deinterleaveSamples(SampleEncoding encoding, const std::uint8_t* source,
                         const MutablePlanarView& destination) {
  if (!withReaderOf(encoding, Deinterleave{source, destination}))
    PlainSampleConversion::deinterleave(encoding, source, destination);
}

#else

void convertSamples(SampleEncoding encoding, const std::uint8_t* source, std::size_t strideSamples,
                    std::size_t count, float* destination) {
  PlainSampleConversion::convert(encoding, source, strideSamples, count, destination);
}

void deinterleaveSamples(SampleEncoding encoding, const std::uint8_t* source,
                         const MutablePlanarView& destination) {
  PlainSampleConversion::deinterleave(encoding, source, destination);
}

#endif  // without vectors

}  // namespace orvane::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane {

HWY_EXPORT(convertSamples);
HWY_EXPORT(deinterleaveSamples);

void convertToFloat(SampleEncoding encoding, const std::byte* source, std::size_t strideSamples,
                    std::size_t count, float* destination) noexcept {
  HWY_DYNAMIC_DISPATCH(convertSamples)
  (encoding, reinterpret_cast<const std::uint8_t*>(source), strideSamples, count, destination);
}

void deinterleaveToFloat(SampleEncoding encoding, const std::byte* source,
                         MutablePlanarView destination) noexcept {
  HWY_DYNAMIC_DISPATCH(deinterleaveSamples)
  (encoding, reinterpret_cast<const std::uint8_t*>(source), destination);
}

}  // namespace orvane
#endif
