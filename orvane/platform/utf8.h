#pragma once

#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// Whether `text` is well-formed UTF-8 (Unicode, table 3-7): no overlong forms, no surrogates,
/// nothing above U+10FFFF. Empty text is.
ORVANE_API bool isValidUTF8(std::string_view text) noexcept;

}  // namespace orvane
