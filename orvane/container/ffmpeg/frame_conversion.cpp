#include "orvane/container/ffmpeg/frame_conversion.h"

#include <bit>
#include <cstdint>
#include <optional>

extern "C" {
#include <libavutil/samplefmt.h>
}

#include "orvane/platform/sample_conversion.h"

namespace orvane {
namespace {

std::optional<SampleType> sampleType(AVSampleFormat packedFormat) {
  switch (packedFormat) {
    case AV_SAMPLE_FMT_U8:
      return SampleType::unsignedInt8;
    case AV_SAMPLE_FMT_S16:
      return SampleType::int16;
    case AV_SAMPLE_FMT_S32:
      return SampleType::int32;
    case AV_SAMPLE_FMT_FLT:
      return SampleType::float32;
    case AV_SAMPLE_FMT_DBL:
      return SampleType::float64;
    default:
      return std::nullopt;
  }
}

/// 64-bit integers, which only one PCM codec gives.
void convertInt64(const AVFrame& frame, std::size_t start, std::size_t count,
                  float* const* destinations, bool isPlanar) {
  const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
  const std::size_t stride = isPlanar ? 1 : channels;
  for (std::size_t c = 0; c < channels; ++c) {
    const auto* source =
        reinterpret_cast<const std::int64_t*>(frame.extended_data[isPlanar ? c : 0]) +
        start * stride + (isPlanar ? 0 : c);
    for (std::size_t i = 0; i < count; ++i)
      destinations[c][i] = static_cast<float>(source[i * stride]) * 0x1p-63F;
  }
}

}  // namespace

bool convertFrame(const AVFrame& frame, std::size_t start, std::size_t count,
                  float* const* destinations) {
  const auto format = static_cast<AVSampleFormat>(frame.format);
  const AVSampleFormat packedFormat = av_get_packed_sample_fmt(format);
  const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
  if (packedFormat == AV_SAMPLE_FMT_S64) {
    convertInt64(frame, start, count, destinations, isPlanar);
    return true;
  }
  const auto type = sampleType(packedFormat);
  if (!type) return false;
  const SampleEncoding encoding{.type = *type,
                                .isBigEndian = std::endian::native == std::endian::big};
  const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
  const std::size_t bytes = bytesPerSample(*type);
  const auto plane = [&](std::size_t index) {
    return reinterpret_cast<const std::byte*>(frame.extended_data[index]);
  };
  if (isPlanar) {
    for (std::size_t c = 0; c < channels; ++c)
      convertToFloat(encoding, plane(c) + start * bytes, 1, count, destinations[c]);
  } else {
    deinterleaveToFloat(encoding, plane(0) + start * channels * bytes, count, channels,
                        destinations);
  }
  return true;
}

}  // namespace orvane
