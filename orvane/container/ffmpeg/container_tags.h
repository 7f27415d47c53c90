#pragma once

#include <string>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

namespace orvane {

/// See `AudioFile::tagNames`.
std::vector<std::string> tagNamesOf(const AVFormatContext& format, const AVStream& stream);

}  // namespace orvane
