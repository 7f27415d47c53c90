#pragma once

#include <optional>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "orvane/platform/channel_layout.h"

namespace orvane {

/// The loudspeakers of FFmpeg's layout, in its order; absent when it names none.
std::optional<ChannelLayout> channelLayoutFrom(const AVChannelLayout& layout);

}  // namespace orvane
