#include "orvane/platform/file_metadata.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

namespace orvane {
namespace {

/// Where the POSIX access list is kept; a new file may have got one from its folder.
constexpr const char* kAccessList = "system.posix_acl_access";

/// Made by the kernel for one content.
constexpr std::array<std::string_view, 2> kContentSignatures = {"security.ima", "security.evm"};

constexpr mode_t kAllModeBits = 07777;

bool isQuestionOfRights(int code) {
  return code == EPERM || code == EACCES || code == ENOTSUP || code == EINVAL || code == ENODATA;
}

/// Changing the owner clears the set-id bits, so the mode comes after it.
int carryOverOwnerAndMode(const struct stat& original, int to) noexcept {
  struct stat copy {};
  if (fstat(to, &copy) != 0) return errno;
  mode_t mode = original.st_mode & kAllModeBits;
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
  const bool isDone = mode == (copy.st_mode & kAllModeBits);
  return isDone || fchmod(to, mode) == 0 ? 0 : errno;
}

/// 0 when the copy has the attribute; EPERM when it cannot have it.
int carryOverAttribute(const std::string& source, const char* name, int to) {
  const ssize_t size = getxattr(source.c_str(), name, nullptr, 0);
  std::string value(size > 0 ? static_cast<std::size_t>(size) : 0, '\0');
  if (size < 0 || getxattr(source.c_str(), name, value.data(), value.size()) != size) {
    if (errno == ENODATA) return 0;
    return isQuestionOfRights(errno) ? EPERM : errno;
  }
  if (fsetxattr(to, name, value.data(), value.size(), 0) == 0) return 0;
  if (!isQuestionOfRights(errno)) return errno;
  // A label that every file of the folder gets may be there already.
  std::string present(value.size() + 1, '\0');
  const ssize_t count = fgetxattr(to, name, present.data(), present.size());
  present.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
  return count >= 0 && present == value ? 0 : EPERM;
}

int carryOverAttributes(int from, int to, MetadataLosses& losses) {
  // A file opened with O_PATH gives its attributes only by name.
  const std::string source = "/proc/self/fd/" + std::to_string(from);
  const ssize_t size = listxattr(source.c_str(), nullptr, 0);
  if (size <= 0) return 0;
  std::string names(static_cast<std::size_t>(size), '\0');
  const ssize_t count = listxattr(source.c_str(), names.data(), names.size());
  if (count < 0) return isQuestionOfRights(errno) ? 0 : errno;
  for (const char* name = names.data(); name < names.data() + count;
       name += std::strlen(name) + 1) {
    if (std::ranges::find(kContentSignatures, std::string_view(name)) != kContentSignatures.end())
      continue;
    const int code = carryOverAttribute(source, name, to);
    if (code == EPERM && name == std::string_view(kAccessList)) {
      losses.accessList = true;
    } else if (code == EPERM) {
      losses.attributes.emplace_back(name);
    } else if (code != 0) {
      return code;
    }
  }
  return 0;
}

}  // namespace

int carryOverMetadata(int from, int to, MetadataLosses& losses) noexcept {
  try {
    (void)fremovexattr(to, kAccessList);  // usually there is none
    struct stat original {};
    struct stat copy {};
    if (fstat(from, &original) != 0) return errno;
    if (const int code = carryOverOwnerAndMode(original, to)) return code;
    if (const int code = carryOverAttributes(from, to, losses)) return code;
    if (fstat(to, &copy) != 0) return errno;
    losses.owner = copy.st_uid != original.st_uid;
    losses.group = copy.st_gid != original.st_gid;
    losses.mode = (copy.st_mode & kAllModeBits) != (original.st_mode & kAllModeBits);
    losses.hardLinks = original.st_nlink > 1 ? original.st_nlink - 1 : 0;
    return 0;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
}

}  // namespace orvane
