#include "orvane/platform/audio_file/ffmpeg/frame_conversion.h"

#include <cstdint>
#include <cstring>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace orvane {
namespace {

float toFloat(std::uint8_t sample) {
  return static_cast<float>(sample - 128) * 0x1p-7F;
}
float toFloat(std::int16_t sample) {
  return static_cast<float>(sample) * 0x1p-15F;
}
float toFloat(std::int32_t sample) {
  return static_cast<float>(sample) * 0x1p-31F;
}
float toFloat(std::int64_t sample) {
  return static_cast<float>(sample) * 0x1p-63F;
}
float toFloat(float sample) {
  return sample;
}
float toFloat(double sample) {
  return static_cast<float>(sample);
}

template <typename Sample>
void convertChannel(const Sample* source, std::size_t stride, std::size_t count,
                    float* destination) {
  if (stride == 1) {
    if constexpr (sizeof(Sample) == sizeof(float) && Sample(0.5F) != Sample(0))
      std::memcpy(destination, source, count * sizeof(float));
    else
      for (std::size_t i = 0; i < count; ++i) destination[i] = toFloat(source[i]);
  } else {
    for (std::size_t i = 0; i < count; ++i) destination[i] = toFloat(source[i * stride]);
  }
}

template <typename Sample>
void convertPlanes(const AVFrame& frame, std::size_t start, std::size_t count,
                   float* const* destinations) {
  const auto channels = static_cast<std::size_t>(frame.ch_layout.nb_channels);
  const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) != 0;
  for (std::size_t c = 0; c < channels; ++c) {
    const auto* plane = reinterpret_cast<const Sample*>(frame.extended_data[isPlanar ? c : 0]);
    if (isPlanar)
      convertChannel(plane + start, 1, count, destinations[c]);
    else
      convertChannel(plane + start * channels + c, channels, count, destinations[c]);
  }
}

}  // namespace

bool convertFrame(const AVFrame& frame, std::size_t start, std::size_t count,
                  float* const* destinations) {
  switch (av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format))) {
    case AV_SAMPLE_FMT_U8:
      convertPlanes<std::uint8_t>(frame, start, count, destinations);
      return true;
    case AV_SAMPLE_FMT_S16:
      convertPlanes<std::int16_t>(frame, start, count, destinations);
      return true;
    case AV_SAMPLE_FMT_S32:
      convertPlanes<std::int32_t>(frame, start, count, destinations);
      return true;
    case AV_SAMPLE_FMT_S64:
      convertPlanes<std::int64_t>(frame, start, count, destinations);
      return true;
    case AV_SAMPLE_FMT_FLT:
      convertPlanes<float>(frame, start, count, destinations);
      return true;
    case AV_SAMPLE_FMT_DBL:
      convertPlanes<double>(frame, start, count, destinations);
      return true;
    default:
      return false;
  }
}

}  // namespace orvane
