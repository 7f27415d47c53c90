#include "cli/options/standard_input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "cli/interruption.h"
#include "orvane/platform/error.h"

namespace orvane::cli {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& name) {
  throw PlatformError(name, std::error_code(errno, std::generic_category()));
}

// A file that never has a name, or has it only until the next line.
int openNamelessFile() {
  const fs::path folder = fs::temp_directory_path();
  int descriptor = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (descriptor != -1) return descriptor;
  std::string pattern = folder / "orvane-XXXXXX";  // file systems without O_TMPFILE
  descriptor = ::mkostemp(pattern.data(), O_CLOEXEC);
  if (descriptor == -1) fail(folder);
  ::unlink(pattern.c_str());
  return descriptor;
}

// Hands every piece of standard input to `take`.
template <typename Take>
void drain(const Take& take) {
  std::array<char, 1 << 16> buffer;
  for (;;) {
    if (Interruption::isRequested()) throw Cancelled();
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count == 0) return;
    if (count > 0) {
      take(std::string_view(buffer.data(), static_cast<std::size_t>(count)));
    } else if (errno != EINTR) {
      fail("standard input");
    }
  }
}

void writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
    if (written < 0 && errno != EINTR) fail(fs::temp_directory_path());
  }
}

bool isUnreadRegularFile() {
  struct stat status {};
  return ::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) &&
         ::lseek(STDIN_FILENO, 0, SEEK_CUR) == 0 && ::access("/proc/self/fd/0", R_OK) == 0;
}

}  // namespace

StandardInput::~StandardInput() {
  if (copy_ != -1) ::close(copy_);
}

fs::path StandardInput::asFile() {
  if (isUnreadRegularFile()) return "/proc/self/fd/0";
  copy_ = openNamelessFile();
  drain([this](std::string_view bytes) { writeAll(copy_, bytes); });
  return "/proc/self/fd/" + std::to_string(copy_);
}

std::string StandardInput::asText() {
  std::string text;
  drain([&text](std::string_view bytes) { text += bytes; });
  return text;
}

}  // namespace orvane::cli
