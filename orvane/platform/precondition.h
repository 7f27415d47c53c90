#pragma once

#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// Stops the process, in every build type, when a caller broke the rules of an operation.
/// Prints one line with the rule and the place. Never used for anything a file or a user can cause.
ORVANE_API void precondition(bool holds, std::string_view rule, const char* file = __builtin_FILE(),
                             unsigned line = __builtin_LINE());

}  // namespace orvane
