#include "orvane/platform/use_mark.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace orvane::UseMark {

bool set(const FileDescriptor& file) noexcept {
  return flock(file.number(), LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

void await(const FileDescriptor& file) noexcept {
  constexpr int kAttempts = 500;
  constexpr timespec kPause{.tv_sec = 0, .tv_nsec = 1'000'000};
  for (int i = 0; i < kAttempts && !set(file); ++i) (void)nanosleep(&kPause, nullptr);
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
