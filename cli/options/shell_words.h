#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// The words of a command in one argument, parted at blanks. Within '…' and "…" blanks belong to a
/// word. Throws `UsageError` for a quote that is not closed.
std::vector<std::string> shellWords(std::string_view text);

}  // namespace orvane::cli
