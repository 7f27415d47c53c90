#pragma once

#include <optional>
#include <string>

#include "orvane/platform/export.h"

namespace orvane {

/// The version of what decodes compressed audio, for example "FFmpeg 5.1.8 (libavformat 59.27.100,
/// libavcodec 59.37.100)". Loads the decoder module; absent when there is none.
ORVANE_API std::optional<std::string> decoderVersion();

}  // namespace orvane
