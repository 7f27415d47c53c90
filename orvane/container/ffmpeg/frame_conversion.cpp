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

std::optional<SampleEncoding> encodingOf(AVSampleFormat packedFormat) {
  constexpr bool kIsBigEndian = std::endian::native == std::endian::big;
  switch (packedFormat) {
    case AV_SAMPLE_FMT_U8:
      return SampleEncoding::unsignedInteger(1);
    case AV_SAMPLE_FMT_S16:
      return SampleEncoding::signedInteger(2, kIsBigEndian);
    case AV_SAMPLE_FMT_S32:
      return SampleEncoding::signedInteger(4, kIsBigEndian);
    case AV_SAMPLE_FMT_S64:
      return SampleEncoding::signedInteger(8, kIsBigEndian);
    case AV_SAMPLE_FMT_FLT:
      return SampleEncoding::floatingPoint(4, kIsBigEndian);
    case AV_SAMPLE_FMT_DBL:
      return SampleEncoding::floatingPoint(8, kIsBigEndian);
    default:
      return std::nullopt;
  }
}

}  // namespace

bool convertFrame(const AVFrame& frame, std::size_t start, std::size_t count,
                  MutablePlanarView room) {
  const auto format = static_cast<AVSampleFormat>(frame.format);
  const AVSampleFormat packedFormat = av_get_packed_sample_fmt(format);
  const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
  const auto encoding = encodingOf(packedFormat);
  if (!encoding) return false;
  const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
  const auto plane = [&](std::size_t index) {
    return reinterpret_cast<const std::byte*>(frame.extended_data[index]);
  };
  if (isPlanar) {
    for (std::size_t c = 0; c < channels; ++c)
      convertToFloat(*encoding, plane(c) + start * encoding->bytes, 1, count, room.channel(c));
  } else {
    deinterleaveToFloat(*encoding, plane(0) + start * channels * encoding->bytes,
                        room.slice(0, count));
  }
  return true;
}

}  // namespace orvane
