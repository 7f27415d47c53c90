#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>

#include "orvane/platform/export.h"
#include "orvane/platform/file_stamp.h"

namespace orvane {

/// A regular file opened for reading at any offset, from any thread. Directories, FIFOs, sockets
/// and devices are refused before a byte is read. Files are read, never mapped: a file that shrinks
/// meanwhile gives short reads instead of a fault.
class ORVANE_API InputFile {
 public:
  /// Throws `PlatformError`.
  explicit InputFile(const std::filesystem::path& path);
  ~InputFile();
  InputFile(InputFile&& other) noexcept;
  InputFile& operator=(InputFile&&) = delete;

  const std::filesystem::path& path() const noexcept { return path_; }
  /// Bytes, as they were at opening.
  std::uint64_t size() const noexcept { return stamp_.size; }
  /// Of the version that was opened.
  const FileStamp& stamp() const noexcept { return stamp_; }

  /// Reads up to `destination.size()` bytes; fewer only where the file ends. Throws
  /// `PlatformError`.
  std::size_t readAt(std::uint64_t offset, std::span<std::byte> destination) const;

  /// Reads exactly `destination.size()` bytes; a file that ends before is a `PlatformError`.
  void readExactlyAt(std::uint64_t offset, std::span<std::byte> destination) const;

 private:
  std::filesystem::path path_;
  int descriptor_ = -1;
  FileStamp stamp_{};
};

}  // namespace orvane
