#include "orvane/platform/use_mark.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orvane::UseMark {

bool set(const FileDescriptor& file) noexcept {
  return flock(file.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

FileDescriptor takeAbandoned(const std::filesystem::path& path) noexcept {
  FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (file && fstat(file.number(), &status) == 0 && status.st_uid == geteuid() &&
      flock(file.number(), LOCK_EX | LOCK_NB) == 0)
    return file;
  return {};
}

}  // namespace orvane::UseMark
