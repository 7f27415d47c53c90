#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "orvane/platform/export.h"

/// Finds an installed browser of the Chromium family.
namespace orvane::BrowserSearch {

/// The folders in which the system looks for programs: the absolute ones of PATH.
ORVANE_TESTING_API std::vector<std::filesystem::path> programFolders();

/// The first known browser that can be run: programs made for headless work come before those with
/// a window, whatever folder they lie in. Absent when there is none.
ORVANE_TESTING_API std::optional<std::filesystem::path> find(
    const std::vector<std::filesystem::path>& folders);

/// `wish` when it is a path, the program of that name when it is one word, else what `find` gives.
/// Throws `BrowserError` (notFound). Whether a path can be run shows when it is started.
ORVANE_TESTING_API std::filesystem::path choose(const std::filesystem::path& wish,
                                                const std::vector<std::filesystem::path>& folders);

}  // namespace orvane::BrowserSearch
