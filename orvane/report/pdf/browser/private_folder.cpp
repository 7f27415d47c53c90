#include "orvane/report/pdf/browser/private_folder.h"

#include <stdlib.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <thread>

#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// Helpers of a program that was just stopped may still be writing for a moment.
constexpr int kRemovalAttempts = 20;
constexpr std::chrono::milliseconds kRemovalPause{5};

}  // namespace

PrivateFolder::PrivateFolder() {
  std::error_code failure;
  const auto parent = std::filesystem::temp_directory_path(failure);
  if (failure) throw PlatformError("temporary folder", failure);
  std::string name = (parent / "orvane-browser-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr)
    throw PlatformError(parent, std::error_code(errno, std::generic_category()));
  path_ = name;
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
