#include "orvane/report/pdf/browser/browser_search.h"

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>

#include "orvane/report/pdf/browser/browser_error.h"

namespace orvane::BrowserSearch {
namespace {

using std::filesystem::path;

constexpr std::string_view kNames[] = {
    "chromium-headless-shell",
    "chrome-headless-shell",
    "headless-shell",
    "headless_shell",
    "chromium",
    "chromium-browser",
    "google-chrome-stable",
    "google-chrome",
};

constexpr std::string_view kUsualFolders = "/usr/local/bin:/usr/bin:/bin";

std::optional<path> findNamed(const path& name, const std::vector<path>& folders) {
  for (const path& folder : folders) {
    path candidate = folder / name;
    std::error_code ignored;
    if (std::filesystem::is_regular_file(candidate, ignored) &&
        access(candidate.c_str(), X_OK) == 0)
      return candidate;
  }
  return std::nullopt;
}

}  // namespace

std::vector<path> programFolders() {
  const char* const setting = std::getenv("PATH");
  std::string_view rest = setting != nullptr ? std::string_view(setting) : kUsualFolders;
  std::vector<path> folders;
  while (!rest.empty()) {
    const auto length = rest.find(':');
    path folder = rest.substr(0, length);
    // What lies in the current folder is nothing to run unasked.
    if (folder.is_absolute()) folders.push_back(std::move(folder));
    rest.remove_prefix(length == std::string_view::npos ? rest.size() : length + 1);
  }
  return folders;
}

std::optional<path> find(const std::vector<path>& folders) {
  for (const std::string_view name : kNames)
    if (auto found = findNamed(name, folders)) return found;
  return std::nullopt;
}

path choose(const path& wish, const std::vector<path>& folders) {
  if (wish.has_parent_path()) return wish;
  if (const auto found = wish.empty() ? find(folders) : findNamed(wish, folders)) return *found;
  if (!wish.empty())
    throw BrowserError(BrowserError::Case::notFound,
                       "There is no program \"" + wish.string() + "\" to write PDF with.");
  throw BrowserError(BrowserError::Case::notFound,
                     "Writing PDF needs a browser: install the package chromium-headless-shell.");
}

}  // namespace orvane::BrowserSearch
