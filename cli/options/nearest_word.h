#pragma once

#include <optional>
#include <span>
#include <string>

namespace orvane::cli {

/// Which of the known words a misspelt one may have meant: the nearest one that two changes of a
/// letter, or one for short words, lead to, two neighbours that changed places counting as one; or
/// the only one that begins with it. Absent when none is near.
std::optional<std::string> nearestWord(const std::string& written,
                                       std::span<const std::string> known);

}  // namespace orvane::cli
