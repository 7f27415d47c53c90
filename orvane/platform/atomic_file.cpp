#include "orvane/platform/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <utility>

#include "orvane/platform/error.h"
#include "orvane/platform/file_descriptor.h"
#include "orvane/platform/file_metadata.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/use_mark.h"
#include "orvane/platform/uuid.h"

namespace orvane {
namespace {

/// As many links as the system itself follows in one name.
constexpr int kMaximumLinks = 40;

/// A replaced file's content must not be readable by more users than before, not even meanwhile.
constexpr mode_t kPrivateMode = 0600;
/// Less the process's mask, as for any new file.
constexpr mode_t kNewFileMode = 0666;

constexpr std::string_view kTemporaryStart = ".orvane-";
constexpr std::string_view kTemporaryEnd = ".tmp";

std::string newTemporaryName() {
  return std::string(kTemporaryStart) + UUID::random().text() + std::string(kTemporaryEnd);
}

[[noreturn]] void fail(const std::filesystem::path& target, int code) {
  throw PlatformError(target, std::error_code(code, std::generic_category()));
}

/// Where `path` leads when it is a symbolic link, whether or not a file stands there.
std::filesystem::path withoutLinks(const std::filesystem::path& path) {
  auto result = path;
  for (int i = 0; i < kMaximumLinks; ++i) {
    std::error_code failure;
    const auto next = std::filesystem::read_symlink(result, failure);
    if (failure) return result;
    result = result.parent_path() / next;
  }
  fail(path, ELOOP);
}

std::string pathOf(const FileDescriptor& file) {
  return "/proc/self/fd/" + std::to_string(file.number());
}

}  // namespace

struct AtomicFile::State {
  State(const std::filesystem::path& target, Existing existing);
  ~State() { discard(); }

  /// Does one step of the writing; if it fails, nothing of the new content stays.
  template <typename Step>
  void orDiscard(Step step) {
    precondition(static_cast<bool>(file), "a file is written before its commit and not after");
    try {
      step();
    } catch (...) {
      discard();
      throw;
    }
  }

  void openOriginal();
  void openTemporary();
  void markTemporary();
  void put(std::span<const std::byte> bytes, std::uint64_t offset) const;
  void commit();
  void nameTemporary();
  void sync() const;
  void rename();
  void syncDirectory() const;
  void discard() noexcept;

  std::filesystem::path target;
  Existing existing;
  std::string name{};           ///< in `directory`, free of links
  FileDescriptor directory{};   ///< so that a folder renamed meanwhile does no harm
  FileDescriptor original{};    ///< what is replaced, if anything
  FileDescriptor file{};        ///< the new content
  FileDescriptor mark{};        ///< that it is in use: outlives `file`, until the name is given
  std::string temporaryName{};  ///< empty while the content has none
  std::uint64_t appendOffset = 0;
};

AtomicFile::State::State(const std::filesystem::path& path, Existing whenExisting)
    : target(path), existing(whenExisting) {
  const auto resolved = withoutLinks(path);
  name = resolved.filename();
  if (name.empty()) fail(target, path.empty() ? ENOENT : EISDIR);
  const auto folder = resolved.parent_path();
  directory = FileDescriptor(
      ::open(folder.empty() ? "." : folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!directory) fail(target, errno);
  openOriginal();
  openTemporary();
}

void AtomicFile::State::openOriginal() {
  original =
      FileDescriptor(openat(directory.number(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!original) {
    if (errno == ENOENT) return;
    fail(target, errno);
  }
  struct stat status {};
  if (fstat(original.number(), &status) != 0) fail(target, errno);
  if (S_ISDIR(status.st_mode)) fail(target, EISDIR);
  if (!S_ISREG(status.st_mode))
    throw PlatformError(target, "Not a regular file",
                        std::make_error_code(std::errc::invalid_argument));
  if (existing == Existing::refuse) fail(target, EEXIST);
  // Renaming asks only for rights to the folder; a file that is protected itself is none of ours.
  if (faccessat(directory.number(), name.c_str(), W_OK, AT_EACCESS) != 0) fail(target, errno);
}

void AtomicFile::State::openTemporary() {
  const mode_t mode = original ? kPrivateMode : kNewFileMode;
  file = FileDescriptor(openat(directory.number(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
  // Such a file gets its name through /proc only.
  if (file && access(pathOf(file).c_str(), F_OK) == 0) return markTemporary();
  auto unique = newTemporaryName();
  file = FileDescriptor(openat(directory.number(), unique.c_str(),
                               O_CREAT | O_EXCL | O_NOFOLLOW | O_RDWR | O_CLOEXEC, mode));
  if (!file) fail(target, errno);
  temporaryName = std::move(unique);
  markTemporary();
}

void AtomicFile::State::markTemporary() {
  mark = FileDescriptor(fcntl(file.number(), F_DUPFD_CLOEXEC, 0));
  UseMark::set(mark);
}

void AtomicFile::State::put(std::span<const std::byte> bytes, std::uint64_t offset) const {
  constexpr auto kLargestOffset = static_cast<std::uint64_t>(INT64_MAX);
  if (offset > kLargestOffset || bytes.size() > kLargestOffset - offset) fail(target, EFBIG);
  while (!bytes.empty()) {
    const ssize_t count =
        pwrite(file.number(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0) {
      if (errno == EINTR) continue;
      fail(target, errno);
    }
    bytes = bytes.subspan(static_cast<std::size_t>(count));
    offset += static_cast<std::uint64_t>(count);
  }
}

void AtomicFile::State::commit() {
  if (original)
    if (const int code = carryOverMetadata(original.number(), file.number())) fail(target, code);
  sync();
  if (temporaryName.empty()) {
    nameTemporary();
    sync();  // some file systems write nothing for a file without a name
  }
  // Network file systems tell here what they could not store.
  if (file.close() != 0 && errno != EINTR) fail(target, errno);
  rename();
  syncDirectory();
}

void AtomicFile::State::nameTemporary() {
  auto unique = newTemporaryName();
  if (linkat(AT_FDCWD, pathOf(file).c_str(), directory.number(), unique.c_str(),
             AT_SYMLINK_FOLLOW) != 0)
    fail(target, errno);
  temporaryName = std::move(unique);
}

void AtomicFile::State::sync() const {
  // Never tried twice: after a failure the system may count the lost pages as written.
  if (fsync(file.number()) != 0) fail(target, errno);
}

void AtomicFile::State::rename() {
  const int folder = directory.number();
  const char* from = temporaryName.c_str();
  int result = 0;
  if (existing == Existing::refuse) {
    result = renameat2(folder, from, folder, name.c_str(), RENAME_NOREPLACE);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
      // A file system without that: what remains is to look first.
      if (faccessat(folder, name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) fail(target, EEXIST);
      result = renameat(folder, from, folder, name.c_str());
    }
  } else {
    result = renameat(folder, from, folder, name.c_str());
  }
  if (result != 0) fail(target, errno);
  temporaryName.clear();
  (void)mark.close();
}

void AtomicFile::State::syncDirectory() const {
  const FileDescriptor folder(openat(directory.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder && fsync(folder.number()) == 0) return;
  // A folder that may not be read or a file system without the notion: nothing more can be had.
  const int code = errno;
  if (code == EACCES || code == EINVAL || code == ENOTSUP || code == EBADF) return;
  const std::error_code reason(code, std::generic_category());
  throw PlatformError(
      target, "Saved, but perhaps not safe against a power failure (" + reason.message() + ")",
      reason);
}

void AtomicFile::State::discard() noexcept {
  if (!temporaryName.empty()) (void)unlinkat(directory.number(), temporaryName.c_str(), 0);
  temporaryName.clear();
  (void)file.close();
  (void)mark.close();
}

AtomicFile::AtomicFile(const std::filesystem::path& target, Existing existing)
    : state_(std::make_unique<State>(target, existing)) {}
AtomicFile::~AtomicFile() = default;
AtomicFile::AtomicFile(AtomicFile&& other) noexcept = default;
AtomicFile& AtomicFile::operator=(AtomicFile&& other) noexcept = default;

const std::filesystem::path& AtomicFile::target() const noexcept {
  return state_->target;
}

void AtomicFile::write(std::span<const std::byte> bytes) {
  state_->orDiscard([&] {
    state_->put(bytes, state_->appendOffset);
    state_->appendOffset += bytes.size();
  });
}

void AtomicFile::write(std::string_view text) {
  write(std::as_bytes(std::span(text)));
}

void AtomicFile::writeAt(std::uint64_t offset, std::span<const std::byte> bytes) {
  state_->orDiscard([&] { state_->put(bytes, offset); });
}

void AtomicFile::reserve(std::uint64_t size) {
  state_->orDiscard([&] {
    if (size == 0) return;
    if (size > static_cast<std::uint64_t>(INT64_MAX)) fail(target(), EFBIG);
    int result = 0;
    do {
      result = fallocate(state_->file.number(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size));
    } while (result != 0 && errno == EINTR);
    if (result != 0 && errno != EOPNOTSUPP && errno != ENOSYS) fail(target(), errno);
  });
}

std::filesystem::path AtomicFile::readablePath() const {
  precondition(static_cast<bool>(state_->file), "a file is checked before its commit");
  return pathOf(state_->file);
}

void AtomicFile::commit() {
  state_->orDiscard([&] { state_->commit(); });
}

std::vector<std::filesystem::path> abandonedTemporaries(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> found;
  std::error_code failure;
  std::filesystem::directory_iterator entries(folder, failure);
  for (; !failure && entries != std::filesystem::directory_iterator(); entries.increment(failure)) {
    const std::string name = entries->path().filename().string();
    if (name.starts_with(kTemporaryStart) && name.ends_with(kTemporaryEnd) &&
        UseMark::takeAbandoned(entries->path()))
      found.push_back(entries->path());
  }
  std::ranges::sort(found);
  return found;
}

void writeFileAtomically(const std::filesystem::path& target, std::span<const std::byte> content) {
  AtomicFile file(target);
  file.write(content);
  file.commit();
}

void writeFileAtomically(const std::filesystem::path& target, std::string_view content) {
  writeFileAtomically(target, std::as_bytes(std::span(content)));
}

}  // namespace orvane
