#pragma once

#include <filesystem>

#include "orvane/platform/export.h"

namespace orvane {

/// Where programs keep files of the user's own: `$XDG_DATA_HOME` if it is an absolute path, else
/// ".local/share" in the user's home, by `$HOME` or by the system's list of users (XDG Base
/// Directory Specification 0.8). It need not exist.
ORVANE_TESTING_API std::filesystem::path userDataDirectory();

}  // namespace orvane
