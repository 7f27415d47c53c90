#pragma once

#include <string>

namespace orvane::cli {

/// The bytes of a file that is read as text; "-" is standard input. Throws `PlatformError` for what
/// cannot be read and for files larger than any text worth reading, and `Cancelled`.
std::string readTextInput(const std::string& name);

/// What people call it: "standard input" for "-".
std::string shownTextInput(const std::string& name);

}  // namespace orvane::cli
