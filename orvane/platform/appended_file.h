#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "orvane/platform/export.h"
#include "orvane/platform/file_descriptor.h"

namespace orvane {

/// A file that grows record by record, for lists that must keep what is done whenever the work
/// stops: each record is in the file, whole, once `append` has returned. Throws `PlatformError`.
class ORVANE_API AppendedFile {
 public:
  /// Goes on behind what the file at `path` holds, which must exist.
  explicit AppendedFile(const std::filesystem::path& path);

  /// A record that does not fit on the disk leaves nothing of itself.
  void append(std::string_view record);

 private:
  std::filesystem::path path_;
  FileDescriptor file_;
  std::int64_t size_ = 0;  ///< bytes
};

}  // namespace orvane
