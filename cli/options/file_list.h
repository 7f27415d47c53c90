#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/options/standard_input.h"
#include "orvane/platform/error.h"

namespace orvane::cli {

/// One file named by the user, or found in a folder so named.
struct InputName {
  std::filesystem::path path{};  ///< what is opened
  std::string display{};         ///< what the user calls it, raw bytes; "-" for standard input
  bool isFound = false;          ///< in a folder: nobody has said that it is audio
  std::optional<int> stream{};   ///< the one that is meant of several; absent for the default one

  bool operator==(const InputName&) const = default;

  bool isStandardInput() const { return display == "-"; }

  /// For people: "standard input" or the name as it was given, with the stream.
  std::string shown() const;

  /// An engine's message about this file, with the name as the user gave it in the place of the
  /// file's own.
  std::string message(std::string_view engineText) const;
  /// The same for an error that arose with this file, also one that names none.
  std::string message(const Error& error) const;
};

/// An error about a file, under the name that the user gave it.
class NamedError : public Error {
 public:
  NamedError(const InputName& file, const Error& error) : Error(file.message(error)) {}
};

/// What `work` gives. Its errors call the file as it was typed: the engine says the last part of
/// the path alone, in which two files of a command may be alike.
template <typename Work>
auto withTypedName(const std::filesystem::path& file, Work work) {
  try {
    return work();
  } catch (const Cancelled&) {
    throw;
  } catch (const Error& error) {
    throw NamedError({file, file.string()}, error);
  }
}

/// Names from the command line and from a list.
namespace FileList {

/// The names of a list: separated by NUL bytes when it has any, else one per line with either line
/// end, a byte-order mark before the first one passed over. Empty ones are left out.
std::vector<std::string> namesIn(std::string_view list);

/// Where names come from.
struct Request {
  std::vector<std::string> names{};  ///< "-" stands for standard input
  std::string listFile{};            ///< of `--files-from`; empty for none, "-" for standard input
  bool opensFolders = false;         ///< a folder stands for the files in it and below
};

/// The files asked for, those of the command line first, those of a folder sorted by path. Links in
/// folders are followed to files, not to folders; a folder that cannot be read stands for itself.
/// Throws `UsageError` when nothing was asked for or standard input was asked for twice,
/// `PlatformError` when the list cannot be read, and `Cancelled`. What "-" stands for is held by
/// `standardInput`.
std::vector<InputName> resolve(const Request& request, StandardInput& standardInput);

}  // namespace FileList
}  // namespace orvane::cli
