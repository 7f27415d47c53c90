#pragma once

#include <filesystem>

#include "orvane/platform/file_descriptor.h"

namespace orvane {

/// A fresh folder in the system's temporary one that nobody else may enter; it goes away with all
/// that lies in it. So do the folders of runs that were killed, when the next one is made.
class PrivateFolder {
 public:
  /// Throws `PlatformError` with the name of the temporary folder.
  PrivateFolder();
  ~PrivateFolder();
  PrivateFolder(const PrivateFolder&) = delete;
  PrivateFolder& operator=(const PrivateFolder&) = delete;

  const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
  FileDescriptor folder_;
};

}  // namespace orvane
