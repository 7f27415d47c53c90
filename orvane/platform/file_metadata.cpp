#include "orvane/platform/file_metadata.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>

namespace orvane {
namespace {

/// Where the POSIX access list is kept; a new file may have got one from its folder.
constexpr const char* kAccessList = "system.posix_acl_access";

bool isQuestionOfRights(int code) {
  return code == EPERM || code == EACCES || code == ENOTSUP || code == EINVAL || code == ENODATA;
}

/// Changing the owner clears the set-id bits, so the mode comes after it.
int carryOverOwnerAndMode(int from, int to) noexcept {
  struct stat original {};
  struct stat copy {};
  if (fstat(from, &original) != 0 || fstat(to, &copy) != 0) return errno;
  mode_t mode = original.st_mode & 07777U;
  if ((original.st_uid != copy.st_uid || original.st_gid != copy.st_gid) &&
      fchown(to, original.st_uid, original.st_gid) != 0) {
    // Set-id bits would now speak for somebody else.
    mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    if (original.st_gid != copy.st_gid &&
        fchown(to, static_cast<uid_t>(-1), original.st_gid) != 0) {
      const mode_t everybody = mode & S_IRWXO;
      mode &= ~static_cast<mode_t>(S_IRWXG) | (everybody << 3U);
    }
  }
  // Without the question, file systems that know no modes would refuse.
  const bool isDone = mode == (copy.st_mode & 07777U);
  return isDone || fchmod(to, mode) == 0 ? 0 : errno;
}

int carryOverAttribute(const std::string& source, const char* name, int to) {
  const ssize_t size = getxattr(source.c_str(), name, nullptr, 0);
  if (size < 0) return isQuestionOfRights(errno) ? 0 : errno;
  std::string value(static_cast<std::size_t>(size), '\0');
  const ssize_t count = getxattr(source.c_str(), name, value.data(), value.size());
  if (count < 0) return isQuestionOfRights(errno) ? 0 : errno;
  if (fsetxattr(to, name, value.data(), static_cast<std::size_t>(count), 0) != 0)
    return isQuestionOfRights(errno) ? 0 : errno;
  return 0;
}

int carryOverAttributes(int from, int to) {
  // A file opened with O_PATH gives its attributes only by name.
  const std::string source = "/proc/self/fd/" + std::to_string(from);
  const ssize_t size = listxattr(source.c_str(), nullptr, 0);
  if (size <= 0) return 0;
  std::string names(static_cast<std::size_t>(size), '\0');
  const ssize_t count = listxattr(source.c_str(), names.data(), names.size());
  if (count < 0) return isQuestionOfRights(errno) ? 0 : errno;
  for (const char* name = names.data(); name < names.data() + count; name += std::strlen(name) + 1)
    if (const int code = carryOverAttribute(source, name, to)) return code;
  return 0;
}

}  // namespace

int carryOverMetadata(int from, int to) noexcept {
  try {
    (void)fremovexattr(to, kAccessList);  // usually there is none
    if (const int code = carryOverOwnerAndMode(from, to)) return code;
    return carryOverAttributes(from, to);
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

}  // namespace orvane
