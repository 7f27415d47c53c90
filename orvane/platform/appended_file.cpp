#include "orvane/platform/appended_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "orvane/platform/error.h"

namespace orvane {

AppendedFile::AppendedFile(const std::filesystem::path& path)
    : path_(path), file_(::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC)) {
  if (!file_) throw PlatformError(path, {errno, std::generic_category()});
  size_ = ::lseek(file_.number(), 0, SEEK_END);
}

void AppendedFile::append(std::string_view record) {
  for (std::string_view left = record; !left.empty();) {
    const ssize_t written = ::write(file_.number(), left.data(), left.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) {
      const std::error_code code(errno, std::generic_category());
      (void)!::ftruncate(file_.number(), size_);
      throw PlatformError(path_, code);
    }
    left.remove_prefix(static_cast<std::size_t>(written));
  }
  size_ += static_cast<std::int64_t>(record.size());
}

}  // namespace orvane
