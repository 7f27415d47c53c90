#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// The extension of a path's last component, without its dot, as written; empty without one.
std::string pathExtension(const std::filesystem::path& url);

/// ASCII letters in lower case; everything else as it stands.
ORVANE_API std::string lowercased(std::string_view text);

/// ASCII letters in upper case.
std::string uppercased(std::string_view text);

/// Whether two texts differ at most in the case of ASCII letters.
bool isSameIgnoringCase(std::string_view a, std::string_view b) noexcept;

}  // namespace orvane
