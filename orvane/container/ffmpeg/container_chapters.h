#pragma once

#include <filesystem>
#include <vector>

#include "orvane/container/chapter_mark.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// The module's operation behind `compressedFileChapters`.
std::vector<ChapterMark> readContainerChapters(const std::filesystem::path& path,
                                               FourCC containerHint);

}  // namespace orvane
