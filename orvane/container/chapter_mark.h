#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace orvane {

/// More marks of one file are not read.
inline constexpr std::size_t kMaximumEmbeddedChapters = 10'000;

/// A place in a file where something begins, as a chapter list or the file itself names it.
struct ChapterMark {
  double startSeconds = 0;             ///< 0 or more
  std::optional<double> endSeconds{};  ///< absent: it lasts until the next mark
  std::string name{};                  ///< UTF-8; empty for none

  bool operator==(const ChapterMark&) const = default;
};

}  // namespace orvane
