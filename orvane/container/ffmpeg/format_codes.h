#pragma once

#include <cstdint>
#include <span>

extern "C" {
#include <libavcodec/codec_id.h>
#include <libavformat/avformat.h>
}

#include "orvane/platform/four_cc.h"

namespace orvane {

/// The code of a container that no signature names, by its demuxer and the codec in it: the usual
/// one of a stream without a container, else one made of the demuxer's name.
FourCC containerCode(const AVInputFormat& demuxer, AVCodecID codec);

/// Format code of a codec; `profile` is FFmpeg's, or FF_PROFILE_UNKNOWN; `configuration` is an
/// MPEG-4 AudioSpecificConfig where the codec has one, else empty.
FourCC codecCode(AVCodecID codec, int profile, std::span<const std::uint8_t> configuration);

}  // namespace orvane
