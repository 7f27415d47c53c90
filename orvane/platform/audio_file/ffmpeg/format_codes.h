#pragma once

#include <cstdint>
#include <span>

extern "C" {
#include <libavcodec/codec_id.h>
#include <libavformat/avformat.h>
}

#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// Container code of what FFmpeg's demuxer found in `file`, for files whose bytes told the sniffer
/// nothing. Containers without a Core Audio code have one of our own.
FourCC containerCode(const AVFormatContext& format, AVCodecID codec, const InputFile& file);

/// Format code of a codec; `profile` is FFmpeg's, or FF_PROFILE_UNKNOWN; `configuration` is an
/// MPEG-4 AudioSpecificConfig where the codec has one, else empty.
FourCC codecCode(AVCodecID codec, int profile, std::span<const std::uint8_t> configuration);

}  // namespace orvane
