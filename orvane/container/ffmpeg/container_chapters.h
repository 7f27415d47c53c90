#pragma once

#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

#include "orvane/container/chapter_mark.h"

namespace orvane {

/// The chapters of a container, in the order of the file.
std::vector<ChapterMark> chaptersOf(const AVFormatContext& format);

}  // namespace orvane
