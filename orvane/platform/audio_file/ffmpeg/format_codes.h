#pragma once

#include <cstdint>
#include <span>

extern "C" {
#include <libavcodec/codec_id.h>
#include <libavformat/avformat.h>
}

#include "orvane/platform/four_cc.h"

namespace orvane {

/// A code for a container that no signature names, made of its demuxer's name.
FourCC containerCode(const AVInputFormat& demuxer);

/// Format code of a codec; `profile` is FFmpeg's, or FF_PROFILE_UNKNOWN; `configuration` is an
/// MPEG-4 AudioSpecificConfig where the codec has one, else empty.
FourCC codecCode(AVCodecID codec, int profile, std::span<const std::uint8_t> configuration);

}  // namespace orvane
