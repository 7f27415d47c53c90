#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "orvane/platform/export.h"

struct stat;

namespace orvane {

/// Which version of which file: equal stamps mean that nobody has written to it, changed its
/// attributes or put another one in its place between the two looks.
struct ORVANE_API FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;     ///< bytes
  std::int64_t modified = 0;  ///< the content; nanoseconds since 1970
  std::int64_t changed = 0;   ///< content, attributes or names; nanoseconds since 1970

  bool operator==(const FileStamp&) const = default;

  /// Of the file at `path`, which may be a symbolic link to it; absent when it cannot be looked at.
  static std::optional<FileStamp> of(const std::filesystem::path& path) noexcept;
  /// Of a file that the system was asked about.
  static FileStamp of(const struct stat& status) noexcept;
  /// Of an open file.
  static std::optional<FileStamp> of(int descriptor) noexcept;
  /// Of what stands under `name` in the open folder, links not followed.
  static std::optional<FileStamp> at(int folder, const std::filesystem::path& name) noexcept;

  bool isSameFile(const FileStamp& other) const noexcept {
    return device == other.device && inode == other.inode;
  }
  /// The same file with the same content, though its name or attributes may have changed.
  bool isSameContent(const FileStamp& other) const noexcept {
    return isSameFile(other) && size == other.size && modified == other.modified;
  }
};

}  // namespace orvane
