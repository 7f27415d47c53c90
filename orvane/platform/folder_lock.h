#pragma once

#include <filesystem>

#include "orvane/platform/export.h"
#include "orvane/platform/file_descriptor.h"

namespace orvane {

/// Keeps others that take the lock of the same folder waiting, in this process and in any other, as
/// long as it lives; however a process ends, its locks are gone. Does nothing on file systems
/// without locks. Plain reading and writing go on regardless.
class ORVANE_TESTING_API FolderLock {
 public:
  /// Waits for whoever has it. Throws `PlatformError` when the folder cannot be opened, and when
  /// the lock is not free within ten seconds.
  explicit FolderLock(const std::filesystem::path& folder);

 private:
  FileDescriptor folder_;
};

}  // namespace orvane
