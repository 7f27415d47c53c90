#include "tests/support/system_call_faults.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <optional>
#include <string_view>

namespace orvane::test::SystemCallFaults {
namespace {

bool isActive = false;
Plan current;
std::size_t counted = 0;
std::vector<std::string> calls;

/// Counts a call; its error number when it is to fail.
std::optional<int> met(std::string_view name) {
  if (!isActive) return std::nullopt;
  calls.emplace_back(name);
  if (!current.only.empty() && name != current.only) return std::nullopt;
  const std::size_t number = counted++;
  switch (current.kind) {
    case Kind::failOnce:
      if (number == current.at) return current.code;
      break;
    case Kind::failFromThen:
      if (number >= current.at) return current.code;
      break;
    case Kind::interrupt:
      if (number == current.at && name == "pwrite") return EINTR;
      break;
    case Kind::kill:
      if (number == current.at) raise(SIGKILL);
      break;
    case Kind::none:
    case Kind::shorten:
      break;
  }
  return std::nullopt;
}

template <typename... Arguments>
long callOrFail(std::string_view name, long number, Arguments... arguments) {
  if (const auto code = met(name)) {
    errno = *code;
    return -1;
  }
  return syscall(number, arguments...);
}

}  // namespace

void begin(const Plan& plan) {
  current = plan;
  counted = 0;
  calls.clear();
  isActive = true;
}

std::vector<std::string> end() {
  isActive = false;
  return std::move(calls);
}

}  // namespace orvane::test::SystemCallFaults

namespace faults = orvane::test::SystemCallFaults;

// Libraries find only what is visible.
#pragma GCC visibility push(default)

extern "C" {

int openat(int folder, const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) {
    va_list rest;
    va_start(rest, flags);
    mode = va_arg(rest, mode_t);
    va_end(rest);
  }
  if (faults::isActive && !faults::current.anonymous && (flags & O_TMPFILE) == O_TMPFILE) {
    errno = EOPNOTSUPP;
    return -1;
  }
  return static_cast<int>(
      faults::callOrFail("openat", SYS_openat, folder, path, flags, static_cast<long>(mode)));
}

ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
  if (faults::isActive && faults::current.kind == faults::Kind::shorten &&
      faults::counted == faults::current.at && count > 1)
    count = 1;
  return faults::callOrFail("pwrite", SYS_pwrite64, file, bytes, count, offset);
}

int fsync(int file) {
  return static_cast<int>(faults::callOrFail("fsync", SYS_fsync, file));
}

int fchown(int file, uid_t owner, gid_t group) {
  return static_cast<int>(faults::callOrFail("fchown", SYS_fchown, file, owner, group));
}

int fchmod(int file, mode_t mode) noexcept {
  return static_cast<int>(faults::callOrFail("fchmod", SYS_fchmod, file, mode));
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept {
  return static_cast<int>(
      faults::callOrFail("fsetxattr", SYS_fsetxattr, file, name, value, size, flags));
}

int fallocate(int file, int mode, off_t offset, off_t size) {
  return static_cast<int>(faults::callOrFail("fallocate", SYS_fallocate, file, mode, offset, size));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
  return static_cast<int>(
      faults::callOrFail("linkat", SYS_linkat, fromFolder, from, toFolder, to, flags));
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
  return static_cast<int>(
      faults::callOrFail("renameat", SYS_renameat2, fromFolder, from, toFolder, to, 0));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned flags) noexcept {
  return static_cast<int>(
      faults::callOrFail("renameat2", SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

int unlinkat(int folder, const char* path, int flags) noexcept {
  return static_cast<int>(faults::callOrFail("unlinkat", SYS_unlinkat, folder, path, flags));
}

int close(int file) {
  const auto code = faults::met("close");
  const auto result = static_cast<int>(syscall(SYS_close, file));
  if (!code) return result;
  errno = *code;  // the file is closed even so, as the system does it
  return -1;
}

}  // extern "C"

#pragma GCC visibility pop
