#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>

#include "orvane/platform/export.h"
#include "orvane/platform/file_descriptor.h"
#include "orvane/report/pdf/browser/private_folder.h"

namespace orvane {

/// A running headless browser with its own process group and profile folder. It reads commands on
/// its descriptor 3 and writes replies on 4; our ends of these pipes do not block.
class ORVANE_TESTING_API BrowserProcess {
 public:
  /// Throws `PlatformError` when the program cannot be started.
  explicit BrowserProcess(const std::filesystem::path& program);
  /// Asks the browser to end by closing its pipes, waits for it for a moment, then stops whatever
  /// is left of its group and removes its folder.
  ~BrowserProcess();
  BrowserProcess(const BrowserProcess&) = delete;
  BrowserProcess& operator=(const BrowserProcess&) = delete;

  int commands() const noexcept { return commands_.number(); }
  int replies() const noexcept { return replies_.number(); }
  /// What it writes to standard error.
  int messages() const noexcept { return messages_.number(); }
  /// Becomes readable when the process has ended; -1 where the system cannot tell that.
  int ending() const noexcept { return ending_.number(); }
  pid_t number() const noexcept { return process_; }
  const std::filesystem::path& folder() const noexcept { return folder_.path(); }

 private:
  void waitForEnd(std::chrono::milliseconds patience) const noexcept;

  PrivateFolder folder_{};
  FileDescriptor commands_{};
  FileDescriptor replies_{};
  FileDescriptor messages_{};
  FileDescriptor ending_{};
  pid_t process_ = -1;
};

}  // namespace orvane
