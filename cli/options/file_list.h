#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "cli/options/standard_input.h"

namespace orvane::cli {

/// One file named by the user.
struct InputName {
  std::filesystem::path path{};  ///< what is opened
  std::string display{};         ///< what the user calls it, raw bytes; "-" for standard input

  bool operator==(const InputName&) const = default;

  bool isStandardInput() const { return display == "-"; }

  /// For people: "standard input" or the name as it was given.
  std::string shown() const;

  /// An engine's message about this file, with the name that the user knows in the place of the one
  /// that was opened.
  std::string message(std::string_view engineText) const;
};

/// Names from the command line and from a list.
namespace FileList {

/// The names of a list: separated by NUL bytes when it has any, else one per line. Empty ones are
/// left out.
std::vector<std::string> namesIn(std::string_view list);

/// Where names come from.
struct Request {
  std::vector<std::string> names{};  ///< "-" stands for standard input
  std::string listFile{};            ///< of `--files-from`; empty for none, "-" for standard input
};

/// The files asked for, those of the command line first. Throws `UsageError` when nothing was asked
/// for or standard input was asked for twice, and `PlatformError` when the list cannot be read.
/// What "-" stands for is held by `standardInput`.
std::vector<InputName> resolve(const Request& request, StandardInput& standardInput);

}  // namespace FileList
}  // namespace orvane::cli
