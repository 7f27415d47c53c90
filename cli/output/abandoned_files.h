#pragma once

#include <filesystem>
#include <vector>

#include "cli/terminal/console.h"

namespace orvane::cli {

/// Names the temporary files of killed runs that lie beside files which are about to be written.
/// They are the user's to remove: perhaps something can be saved from them.
void warnOfAbandonedFiles(const std::vector<std::filesystem::path>& outputs, Console& console);

}  // namespace orvane::cli
