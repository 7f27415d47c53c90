#pragma once

#include <optional>
#include <string>

namespace orvane {

/// A place in a file where something begins, as a chapter list or the file itself names it.
struct ChapterMark {
  double startSeconds = 0;             ///< 0 or more
  std::optional<double> endSeconds{};  ///< absent: it lasts until the next mark
  std::string name{};                  ///< UTF-8; empty for none

  bool operator==(const ChapterMark&) const = default;
};

}  // namespace orvane
