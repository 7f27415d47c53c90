#pragma once

#include <filesystem>
#include <optional>

#include "orvane/platform/export.h"

namespace orvane {

/// Where the running code lies on disk, as absolute paths without symbolic links.
namespace ModuleLocation {

/// The file that holds this library's code: the shared library, or the program when the library is
/// linked into it statically. Absent when the system cannot tell.
ORVANE_API std::optional<std::filesystem::path> module();

/// The program that runs. Absent without /proc.
ORVANE_API std::optional<std::filesystem::path> executable();

}  // namespace ModuleLocation
}  // namespace orvane
