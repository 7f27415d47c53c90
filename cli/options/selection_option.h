#pragma once

#include <optional>
#include <string_view>

namespace orvane::cli {

/// A stretch of a file as the user says it.
struct SelectionOption {
  double startSeconds = 0;
  std::optional<double> endSeconds{};  ///< absent: to the end of the file

  bool operator==(const SelectionOption&) const = default;

  /// From "A-B" or "A-", each time in seconds or as [h:]mm:ss[.fff]. Throws `UsageError`.
  static SelectionOption parse(std::string_view text);
};

}  // namespace orvane::cli
