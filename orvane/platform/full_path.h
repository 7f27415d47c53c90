#pragma once

#include <filesystem>

#include "orvane/platform/export.h"

namespace orvane {

/// From the root and without detours, but with the file's own name even where that is a link. A
/// path that leads nowhere is made as full as can be.
ORVANE_API std::filesystem::path fullPath(const std::filesystem::path& path);

}  // namespace orvane
