#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// Finds the files that ship with the library: in what belongs to the module that holds its code,
/// in what belongs to the running program, then in the resource bundles beside either. A bundle is
/// a folder. Nothing here fails: what cannot be found or read is absent.
namespace OrvaneResources {

/// A binary or a bundle folder, as far as it can hold resources.
struct Bundle {
  /// The folder of the binary, or the bundle folder itself.
  std::optional<std::filesystem::path> bundleURL{};
  /// The folder of its resources; for a binary the installation's "share/orvane". Absent when there
  /// is none: the resources then lie in `bundleURL`.
  std::optional<std::filesystem::path> resourceURL{};

  bool operator==(const Bundle&) const = default;
};

/// The bundle of a binary: its folder, and "share/orvane" under the prefix that it is installed in
/// when that folder exists. The prefix is the parent of the binary's folder, or that of "lib" when
/// the binary lies one level deeper (lib/x86_64-linux-gnu).
ORVANE_API Bundle bundleOfBinary(const std::optional<std::filesystem::path>& binary);

/// The path of the resource "<resource>.<extension>" (just "<resource>" for an empty extension) as
/// the running process sees it; absent when no candidate holds it.
ORVANE_API std::optional<std::filesystem::path> url(std::string_view resource,
                                                    std::string_view extension);

/// The same, asked of a given module and a given program.
ORVANE_API std::optional<std::filesystem::path> url(const Bundle& module, const Bundle& program,
                                                    std::string_view resource,
                                                    std::string_view extension);

}  // namespace OrvaneResources
}  // namespace orvane
