#include "orvane/report/pdf/browser/private_folder.h"

#include <fcntl.h>
#include <stdlib.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>

#include "orvane/platform/error.h"
#include "orvane/platform/use_mark.h"

namespace orvane {
namespace {

/// Helpers of a program that was just stopped may still be writing for a moment.
constexpr int kRemovalAttempts = 20;
constexpr std::chrono::milliseconds kRemovalPause{5};

constexpr const char* kNameStart = "orvane-browser-";

void removeAbandonedFolders(const std::filesystem::path& parent) {
  std::error_code failure;
  std::filesystem::directory_iterator entries(parent, failure);
  for (; !failure && entries != std::filesystem::directory_iterator(); entries.increment(failure)) {
    const auto& path = entries->path();
    if (!path.filename().string().starts_with(kNameStart)) continue;
    std::error_code ignored;
    if (const auto folder = UseMark::takeAbandoned(path))
      std::filesystem::remove_all(path, ignored);
  }
}

}  // namespace

PrivateFolder::PrivateFolder() {
  std::error_code failure;
  const auto parent = std::filesystem::temp_directory_path(failure);
  if (failure) throw PlatformError("temporary folder", failure);
  removeAbandonedFolders(parent);
  do {
    std::string name = (parent / (std::string(kNameStart) + "XXXXXX")).string();
    if (mkdtemp(name.data()) == nullptr)
      throw PlatformError(parent, std::error_code(errno, std::generic_category()));
    path_ = name;
    folder_ = FileDescriptor(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Before it is marked another run may take it for abandoned.
  } while (!UseMark::set(folder_) || !std::filesystem::exists(path_, failure));
}

PrivateFolder::~PrivateFolder() {
  for (int i = 0; i < kRemovalAttempts; ++i) {
    std::error_code failure;
    std::filesystem::remove_all(path_, failure);
    if (!failure) return;
    std::this_thread::sleep_for(kRemovalPause);
  }
}

}  // namespace orvane
