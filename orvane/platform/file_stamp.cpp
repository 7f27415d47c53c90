#include "orvane/platform/file_stamp.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace orvane {
namespace {

std::int64_t nanoseconds(const timespec& time) {
  constexpr std::int64_t kPerSecond = 1'000'000'000;
  return time.tv_sec * kPerSecond + time.tv_nsec;
}

std::optional<FileStamp> look(int folder, const std::filesystem::path& name, int flags) {
  struct stat status {};
  if (fstatat(folder, name.c_str(), &status, flags) != 0) return std::nullopt;
  return FileStamp::of(status);
}

}  // namespace

FileStamp FileStamp::of(const struct stat& status) noexcept {
  return {.device = status.st_dev,
          .inode = status.st_ino,
          .size = static_cast<std::uint64_t>(status.st_size),
          .modified = nanoseconds(status.st_mtim),
          .changed = nanoseconds(status.st_ctim)};
}

std::optional<FileStamp> FileStamp::of(const std::filesystem::path& path) noexcept {
  return look(AT_FDCWD, path, 0);
}

std::optional<FileStamp> FileStamp::of(int descriptor) noexcept {
  struct stat status {};
  if (fstat(descriptor, &status) != 0) return std::nullopt;
  return of(status);
}

std::optional<FileStamp> FileStamp::at(int folder, const std::filesystem::path& name) noexcept {
  return look(folder, name, AT_SYMLINK_NOFOLLOW);
}

}  // namespace orvane
