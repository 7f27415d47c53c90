#pragma once

#include <string_view>
#include <vector>

#include "orvane/container/chapter_mark.h"

namespace orvane::ChapterList {

/// Whether a line begins with one of the commands that stand at the top of cue sheets.
bool isCueSheetLine(std::string_view line) noexcept;

/// The audio tracks of a cue sheet. Throws `TextListError`.
std::vector<ChapterMark> readCueSheet(std::string_view text);

}  // namespace orvane::ChapterList
