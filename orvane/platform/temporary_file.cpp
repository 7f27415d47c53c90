#include "orvane/platform/temporary_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <utility>

#include "orvane/platform/saved_file_error.h"
#include "orvane/platform/use_mark.h"
#include "orvane/platform/uuid.h"

namespace orvane {
namespace {

constexpr std::string_view kInfix = ".orvane-save-";
constexpr std::size_t kUniqueLength = 8;
/// So many names can be taken by chance or by somebody's malice before it is no use to try another.
constexpr int kAttempts = 16;

/// As much of UTF-8 text as fits, cut between two characters.
std::string_view beginningOf(std::string_view text, std::size_t size) {
  if (text.size() <= size) return text;
  const auto isContinuation = [](char byte) { return (byte & 0xC0) == 0x80; };
  while (size > 0 && isContinuation(text[size])) --size;
  return text.substr(0, size);
}

std::string newTemporaryName(const std::filesystem::path& name) {
  const std::string unique = UUID::random().text().substr(0, kUniqueLength);
  const std::string stem = name.stem();
  std::string extension = name.extension();
  const std::size_t room = NAME_MAX - 1 - kInfix.size() - kUniqueLength;
  if (extension.size() > room) extension.clear();
  std::string result = ".";
  result.append(beginningOf(stem, room - extension.size()));
  return result.append(kInfix).append(unique).append(extension);
}

/// The file system has no such operation or no such option of it.
bool isUnsupported(int code) {
  return code == EINVAL || code == ENOSYS || code == EOPNOTSUPP;
}

}  // namespace

TemporaryFile::TemporaryFile(const FileDescriptor& folder, std::filesystem::path name,
                             std::filesystem::path target, mode_t mode)
    : folder_(folder.number()), name_(std::move(name)), target_(std::move(target)) {
  file_ = FileDescriptor(openat(folder_, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
  // Such a file gets its name through /proc only.
  if (file_ && access(path().c_str(), F_OK) != 0) (void)file_.close();
  for (int i = 0; !file_ && i < kAttempts; ++i) {
    auto unique = newTemporaryName(name_);
    file_ = FileDescriptor(
        openat(folder_, unique.c_str(), O_CREAT | O_EXCL | O_NOFOLLOW | O_RDWR | O_CLOEXEC, mode));
    if (file_) temporaryName_ = std::move(unique);
    if (!file_ && errno != EEXIST) break;
  }
  if (!file_) fail(errno);
  mark_ = FileDescriptor(fcntl(file_.number(), F_DUPFD_CLOEXEC, 0));
  const auto own = FileStamp::of(file_.number());
  if (!mark_ || !own) {
    const int code = errno;
    if (!temporaryName_.empty()) (void)unlinkat(folder_, temporaryName_.c_str(), 0);
    fail(code);
  }
  own_ = *own;
  UseMark::set(mark_);
}

std::filesystem::path TemporaryFile::path() const {
  return "/proc/self/fd/" + std::to_string(file_.number());
}

void TemporaryFile::fail(int code) const {
  throw PlatformError(target_, std::error_code(code, std::generic_category()));
}

PlatformError TemporaryFile::changedMeanwhile(const std::filesystem::path& target) {
  return {target, "the file was changed by another program meanwhile"};
}

void TemporaryFile::sync() const {
  // Never tried twice: after a failure the system may count the lost pages as written.
  if (fsync(file_.number()) != 0) fail(errno);
}

void TemporaryFile::finish() {
  if (temporaryName_.empty()) {
    for (int i = 0; temporaryName_.empty(); ++i) {
      auto unique = newTemporaryName(name_);
      if (linkat(AT_FDCWD, path().c_str(), folder_, unique.c_str(), AT_SYMLINK_FOLLOW) == 0)
        temporaryName_ = std::move(unique);
      else if (errno != EEXIST || i == kAttempts)
        fail(errno);
    }
    sync();  // some file systems write nothing for a file without a name
  }
  // Network file systems tell here what they could not store.
  if (file_.close() != 0 && errno != EINTR) fail(errno);
}

bool TemporaryFile::isUnder(const std::filesystem::path& name) const noexcept {
  const auto standing = FileStamp::at(folder_, name);
  return standing && standing->isSameFile(own_);
}

bool TemporaryFile::mayBeUnder(const std::filesystem::path& name) const noexcept {
  const auto standing = FileStamp::at(folder_, name);
  return !standing || standing->isSameFile(own_);
}

void TemporaryFile::takeFreeName() {
  const char* from = temporaryName_.c_str();
  if (renameat2(folder_, from, folder_, name_.c_str(), RENAME_NOREPLACE) == 0) return end();
  if (!isUnsupported(errno)) return isUnder(name_) ? end() : fail(errno);
  if (linkat(folder_, from, folder_, name_.c_str(), 0) == 0) return removeTemporaryName();
  if (!isUnsupported(errno) && errno != EPERM) fail(errno);
  // A file system with neither: what remains is to look first.
  if (faccessat(folder_, name_.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) fail(EEXIST);
  replaceAny();
}

void TemporaryFile::replaceAny() {
  if (renameat(folder_, temporaryName_.c_str(), folder_, name_.c_str()) != 0) {
    const int code = errno;
    if (!isUnder(name_)) fail(code);
  }
  end();
}

void TemporaryFile::replaceVersion(const FileStamp& version) {
  // Of several who want to replace the same version, each marks it and so comes in turn: a third
  // one between another's exchange and its look would put back what belongs to nobody. The mark
  // also tells that what comes out of the exchange is in use. Other programs do not know of it.
  const FileDescriptor turn(
      openat(folder_, name_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (turn) UseMark::await(turn);
  const auto standing = FileStamp::at(folder_, name_);
  if (!standing && errno != ENOENT) fail(errno);
  if (standing != version) throw changedMeanwhile(target_);
  const auto exchange = [&] {
    return renameat2(folder_, temporaryName_.c_str(), folder_, name_.c_str(), RENAME_EXCHANGE);
  };
  if (exchange() != 0) {
    if (isUnsupported(errno)) return replaceAny();
    if (errno == ENOENT) throw changedMeanwhile(target_);
    const int code = errno;
    if (!isUnder(name_)) fail(code);
  }
  // What somebody has put there in the last moment has come out now.
  const auto replaced = FileStamp::at(folder_, temporaryName_);
  const int lookFailure = errno;
  if (replaced && replaced->isSameContent(version)) return removeTemporaryName();
  if (exchange() == 0 || !mayBeUnder(name_)) {
    if (!replaced) fail(lookFailure);
    throw changedMeanwhile(target_);
  }
  const std::filesystem::path aside = std::exchange(temporaryName_, {});
  if (!replaced) failAsLeftBeside(aside, lookFailure);
  throw SavedFileError(
      target_, "over a change by another program, which is now in \"" + aside.string() + '"');
}

void TemporaryFile::failAsLeftBeside(const std::filesystem::path& name, int code) const {
  throw SavedFileError(target_, '"' + name.string() + "\" is left beside it",
                       std::error_code(code, std::generic_category()));
}

void TemporaryFile::removeTemporaryName() {
  const std::filesystem::path name = std::exchange(temporaryName_, {});
  end();
  const auto remove = [&] { return unlinkat(folder_, name.c_str(), 0) == 0 || errno == ENOENT; };
  if (!remove() && !remove()) failAsLeftBeside(name, errno);
}

void TemporaryFile::end() noexcept {
  temporaryName_.clear();
  (void)mark_.close();
}

void TemporaryFile::discard() noexcept {
  // Tried again, because failures pass; and after an exchange it may be somebody else's file.
  for (int i = 0; i < 2 && !temporaryName_.empty(); ++i)
    if (isUnder(temporaryName_) && unlinkat(folder_, temporaryName_.c_str(), 0) == 0) break;
  temporaryName_.clear();
  (void)file_.close();
  (void)mark_.close();
}

bool TemporaryFile::isTemporaryName(std::string_view name) noexcept {
  const auto at = name.rfind(kInfix);
  if (!name.starts_with('.') || at == std::string_view::npos) return false;
  const auto unique = name.substr(at + kInfix.size()).substr(0, kUniqueLength);
  const auto rest = name.substr(at + kInfix.size() + unique.size());
  const auto isDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); };
  return unique.size() == kUniqueLength && std::ranges::all_of(unique, isDigit) &&
         (rest.empty() || rest.starts_with('.'));
}

}  // namespace orvane
