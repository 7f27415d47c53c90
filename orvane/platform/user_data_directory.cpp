#include "orvane/platform/user_data_directory.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace orvane {
namespace {

/// Empty when the variable does not name one.
std::filesystem::path absolutePathIn(const char* variable) {
  const char* const value = std::getenv(variable);
  if (value == nullptr || value[0] != '/') return {};
  return value;
}

std::filesystem::path listedHome() {
  std::array<char, 16384> text{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, text.data(), text.size(), &found) != 0 || found == nullptr)
    return "/";
  return found->pw_dir;
}

}  // namespace

std::filesystem::path userDataDirectory() {
  if (auto directory = absolutePathIn("XDG_DATA_HOME"); !directory.empty()) return directory;
  const auto home = absolutePathIn("HOME");
  return (home.empty() ? listedHome() : home) / ".local/share";
}

}  // namespace orvane
