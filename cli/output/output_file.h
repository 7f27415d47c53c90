#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <utility>

#include "cli/options/file_list.h"
#include "orvane/platform/atomic_file.h"

namespace orvane::cli {

/// The files that a command reads, to keep its outputs from them whatever they are called.
class ReadFiles {
 public:
  void add(const std::filesystem::path& file);

  /// Throws `Error` when the output is one of them.
  void requireNone(const std::filesystem::path& output) const;

 private:
  std::map<std::pair<dev_t, ino_t>, std::filesystem::path> files_{};
};

/// A file that a command writes. Texts name the option that replaces what exists.
namespace OutputFile {

inline AtomicFile::Existing existing(bool force) {
  return force ? AtomicFile::Existing::replace : AtomicFile::Existing::refuse;
}

/// Throws `PlatformError`.
AtomicFile open(const std::filesystem::path& output, bool force);

/// Finds out before any work is done whether that will succeed. Throws `PlatformError`.
void requireWritable(const std::filesystem::path& output, bool force);

/// What `write` gives; its errors call the output as it was typed, and where that exists say how to
/// replace it.
template <typename Write>
auto writing(const std::filesystem::path& output, Write write) {
  return withTypedName(output, [&] {
    try {
      return write();
    } catch (const PlatformError& error) {
      if (error.code() != std::errc::file_exists) throw;
      throw PlatformError(output, error.message() + "; --force replaces it", error.code());
    }
  });
}

}  // namespace OutputFile
}  // namespace orvane::cli
