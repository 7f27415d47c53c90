#pragma once

#include <filesystem>
#include <string>

namespace orvane::cli {

/// Standard input as a file or as text.
class StandardInput {
 public:
  StandardInput() = default;
  ~StandardInput();
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;

  /// A path under which the bytes of standard input can be opened as a regular file for as long as
  /// this object lives: standard input itself where it is one, else a copy without a name in the
  /// folder for temporary files. Throws `PlatformError`, and `Cancelled` when interrupted.
  std::filesystem::path asFile();

  /// Everything up to its end. Throws likewise.
  std::string asText();

 private:
  int copy_ = -1;
};

}  // namespace orvane::cli
