#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>

#include "tests/support/temporary_directory.h"
#include "tests/support/test_places.h"

namespace orvane::test {

/// A program that plays a browser and misbehaves as told; see fake_browser.py.
class FakeBrowser {
 public:
  explicit FakeBrowser(std::string_view script) {
    std::filesystem::copy_file(places::fakeBrowser, program());
    folder_.write("script", script);
  }

  std::filesystem::path program() const { return folder_ / "browser"; }
  /// A value of PATH by which it is found in the place of any other browser.
  std::string searchPath() const {
    std::error_code isThere;
    std::filesystem::create_symlink(program(), folder_ / "chromium-headless-shell", isThere);
    return folder_.path().string() + ":/usr/bin:/bin";
  }
  void answerWith(std::string_view pdf) const { folder_.write("answer.pdf", pdf); }

  std::string commands() const { return content("commands"); }
  std::string arguments() const { return content("arguments"); }
  int number(std::string_view file) const { return std::stoi(content(file)); }

 private:
  std::string content(std::string_view name) const {
    std::ifstream stream(folder_ / name);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  TemporaryDirectory folder_{};
};

/// While it lives, temporary files of this process go into a folder of its own.
class OwnTemporaryFolder {
 public:
  OwnTemporaryFolder() {
    if (const char* const setting = getenv("TMPDIR")) before_ = setting;
    setenv("TMPDIR", folder_.path().c_str(), 1);
  }
  ~OwnTemporaryFolder() {
    if (before_.empty())
      unsetenv("TMPDIR");
    else
      setenv("TMPDIR", before_.c_str(), 1);
  }
  OwnTemporaryFolder(const OwnTemporaryFolder&) = delete;
  OwnTemporaryFolder& operator=(const OwnTemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return folder_.path(); }
  bool isEmpty() const { return std::filesystem::is_empty(folder_.path()); }

 private:
  TemporaryDirectory folder_{};
  std::string before_{};
};

/// Whether a process does any work; one that has ended and is not yet collected does none.
inline bool isRunning(int process) {
  std::ifstream stream("/proc/" + std::to_string(process) + "/stat");
  std::string word;
  std::string state;
  stream >> word >> word >> state;
  return !state.empty() && state != "Z" && state != "X";
}

}  // namespace orvane::test
