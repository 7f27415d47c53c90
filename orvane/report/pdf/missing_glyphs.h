#pragma once

#include <span>
#include <string>

#include "orvane/platform/export.h"

namespace orvane {

/// The warning that a page shows boxes in the place of these characters, and the packages that
/// bring fonts for them; at least one.
ORVANE_TESTING_API std::string missingGlyphsWarning(std::span<const char32_t> characters);

}  // namespace orvane
