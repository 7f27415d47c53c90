#pragma once

#include <optional>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "orvane/platform/channel_layout.h"

namespace orvane {

/// The loudspeakers of FFmpeg's layout, in its order. One or two channels that it does not name are
/// mono or stereo; absent for more than that.
std::optional<ChannelLayout> channelLayoutFrom(const AVChannelLayout& layout);

}  // namespace orvane
