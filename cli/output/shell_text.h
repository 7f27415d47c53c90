#pragma once

#include <string>
#include <string_view>

namespace orvane::cli {

/// A file's name as a shell takes it for one argument that is no option: in quotes where it needs
/// them, "./" before a leading hyphen.
std::string shellText(std::string_view name);

}  // namespace orvane::cli
