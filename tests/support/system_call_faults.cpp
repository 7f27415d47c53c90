#include "tests/support/system_call_faults.h"

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <optional>
#include <sstream>

#include "tests/support/allocation_faults.h"

namespace orvane::test::SystemCallFaults {
namespace {

constexpr const char* kVariable = "ORVANE_TEST_FAULTS";

std::atomic<bool> isActive{false};
Plan& current = *new Plan;  // calls come until the very end of the process
std::atomic<std::size_t> counted{0};
/// Names of calls; fixed, because a call may come from anywhere.
std::array<const char*, 1 << 14> calls;
std::atomic<std::size_t> callCount{0};
int logFile = -1;

void note(const char* name) {
  const std::size_t index = callCount++;
  if (index < calls.size()) calls[index] = name;
  if (logFile < 0) return;
  const std::string line = std::string(name) + "\n";
  (void)syscall(SYS_write, logFile, line.data(), line.size());
}

bool isWriting(std::string_view name) {
  return name == "pwrite";
}

/// Counts a call; its error number when it is to fail.
std::optional<int> met(const char* name) {
  if (!isActive) return std::nullopt;
  note(name);
  if (current.meanwhile) {
    isActive = false;  // what it does itself is no part of the plan
    current.meanwhile(name);
    isActive = true;
  }
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
      if (number == current.at && isWriting(name)) return EINTR;
      break;
    case Kind::kill:
      if (number == current.at) raise(SIGKILL);
      break;
    case Kind::terminate:
      if (number == current.at) raise(SIGTERM);
      break;
    case Kind::stop:
      if (number == current.at) raise(SIGSTOP);
      break;
    case Kind::none:
    case Kind::shorten:
      break;
  }
  return std::nullopt;
}

template <typename... Arguments>
long callOrFail(const char* name, long number, Arguments... arguments) {
  if (const auto code = met(name)) {
    errno = *code;
    return -1;
  }
  return syscall(number, arguments...);
}

/// Where a program that was started with `variablesFor` begins.
bool beginByEnvironment() {
  const char* const text = std::getenv(kVariable);
  if (text == nullptr) return false;
  ::unsetenv(kVariable);
  ::unsetenv("LD_PRELOAD");  // programs started by this one are left alone
  std::istringstream fields(text);
  Plan plan;
  int kind = 0;
  std::string only, log;
  fields >> kind >> plan.at >> plan.code >> plan.anonymous >> plan.exchange >> only >> log;
  plan.kind = static_cast<Kind>(kind);
  if (only != "-") plan.only = only;
  logFile = static_cast<int>(syscall(SYS_openat, AT_FDCWD, log.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600));
  begin(plan);
  return true;
}

[[maybe_unused]] const bool isByEnvironment = beginByEnvironment();

}  // namespace

void begin(const Plan& plan) {
  current = plan;
  counted = 0;
  callCount = 0;
  isActive = true;
}

std::vector<std::string> end() {
  isActive = false;
  return {calls.begin(),
          calls.begin() + static_cast<std::ptrdiff_t>(std::min(callCount.load(), calls.size()))};
}

std::vector<std::string> variablesFor(const Plan& plan, const std::filesystem::path& library,
                                      const std::filesystem::path& log) {
  std::ostringstream fields;
  fields << static_cast<int>(plan.kind) << ' ' << plan.at << ' ' << plan.code << ' '
         << plan.anonymous << ' ' << plan.exchange << ' ' << (plan.only.empty() ? "-" : plan.only)
         << ' ' << log.string();
  return {"LD_PRELOAD=" + library.string(), std::string(kVariable) + "=" + fields.str()};
}

}  // namespace orvane::test::SystemCallFaults

namespace faults = orvane::test::SystemCallFaults;

// Libraries find only what is visible.
#pragma GCC visibility push(default)

namespace {

mode_t modeOf(int flags, va_list rest) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ? va_arg(rest, mode_t) : 0;
}

int failWith(int code) {
  errno = code;
  return -1;
}

}  // namespace

extern "C" {

int openat(int folder, const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const long mode = modeOf(flags, rest);
  va_end(rest);
  if (faults::isActive && !faults::current.anonymous && (flags & O_TMPFILE) == O_TMPFILE)
    return failWith(EOPNOTSUPP);
  return static_cast<int>(faults::callOrFail("openat", SYS_openat, folder, path, flags, mode));
}

int open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const long mode = modeOf(flags, rest);
  va_end(rest);
  orvane::test::AllocationFaults::beginAsAsked();
  return static_cast<int>(faults::callOrFail("open", SYS_openat, AT_FDCWD, path, flags, mode));
}

ssize_t pread(int file, void* bytes, size_t count, off_t offset) {
  return faults::callOrFail("pread", SYS_pread64, file, bytes, count, offset);
}

ssize_t pwrite(int file, const void* bytes, size_t count, off_t offset) {
  if (faults::isActive && faults::current.kind == faults::Kind::shorten &&
      faults::counted == faults::current.at && count > 1)
    count = 1;
  return faults::callOrFail("pwrite", SYS_pwrite64, file, bytes, count, offset);
}

int fstat(int file, struct stat* status) noexcept {
  return static_cast<int>(faults::callOrFail("fstat", SYS_fstat, file, status));
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  return static_cast<int>(
      faults::callOrFail("fstatat", SYS_newfstatat, folder, path, status, flags));
}

int flock(int file, int operation) noexcept {
  return static_cast<int>(faults::callOrFail("flock", SYS_flock, file, operation));
}

int fsync(int file) {
  return static_cast<int>(faults::callOrFail("fsync", SYS_fsync, file));
}

int sync_file_range(int file, off_t offset, off_t size, unsigned flags) {
  return static_cast<int>(
      faults::callOrFail("sync_file_range", SYS_sync_file_range, file, offset, size, flags));
}

int ftruncate(int file, off_t size) noexcept {
  return static_cast<int>(faults::callOrFail("ftruncate", SYS_ftruncate, file, size));
}

int fallocate(int file, int mode, off_t offset, off_t size) {
  return static_cast<int>(faults::callOrFail("fallocate", SYS_fallocate, file, mode, offset, size));
}

int fchown(int file, uid_t owner, gid_t group) noexcept {
  return static_cast<int>(faults::callOrFail("fchown", SYS_fchown, file, owner, group));
}

int fchmod(int file, mode_t mode) noexcept {
  return static_cast<int>(faults::callOrFail("fchmod", SYS_fchmod, file, mode));
}

ssize_t listxattr(const char* path, char* names, size_t size) noexcept {
  return faults::callOrFail("listxattr", SYS_listxattr, path, names, size);
}

ssize_t getxattr(const char* path, const char* name, void* value, size_t size) noexcept {
  return faults::callOrFail("getxattr", SYS_getxattr, path, name, value, size);
}

int fsetxattr(int file, const char* name, const void* value, size_t size, int flags) noexcept {
  return static_cast<int>(
      faults::callOrFail("fsetxattr", SYS_fsetxattr, file, name, value, size, flags));
}

int fremovexattr(int file, const char* name) noexcept {
  return static_cast<int>(faults::callOrFail("fremovexattr", SYS_fremovexattr, file, name));
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
  if (faults::isActive && !faults::current.exchange && flags == RENAME_EXCHANGE)
    return failWith(EINVAL);
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
