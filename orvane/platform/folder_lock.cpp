#include "orvane/platform/folder_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

#include "orvane/platform/error.h"

namespace orvane {

FolderLock::FolderLock(const std::filesystem::path& folder)
    : folder_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  using namespace std::chrono_literals;
  if (!folder_) throw PlatformError(folder, {errno, std::generic_category()});
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (flock(folder_.number(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return;  // no locks here
    if (std::chrono::steady_clock::now() > deadline)
      throw PlatformError(folder, "another program has been writing there for ten seconds",
                          std::make_error_code(std::errc::timed_out));
    std::this_thread::sleep_for(5ms);
  }
}

}  // namespace orvane
