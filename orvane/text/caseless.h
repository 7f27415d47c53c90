#pragma once

#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// Whether two texts differ in the case of letters and in the composition of characters at most
/// (canonical caseless matching, Unicode, section 3.13, D145): "straße" and "STRASSE", "é" as one
/// character and as two. The same in every locale: "i" is not "ı". Malformed bytes count as U+FFFD.
ORVANE_API bool areCaselessEqual(std::string_view a, std::string_view b);

}  // namespace orvane
