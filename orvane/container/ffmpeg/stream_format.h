#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
}

#include "orvane/container/audio_file.h"
#include "orvane/container/ffmpeg/demuxer.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// Describes the demuxer's stream. `decoded` is its first decoded frame and `codec` the context
/// that decoded it, which know more than the container does; both null when nothing was decoded.
AudioFileDescription describeStream(const Demuxer& demuxer, FourCC containerHint,
                                    const AVCodecContext* codec, const AVFrame* decoded);

}  // namespace orvane
