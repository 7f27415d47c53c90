#include "orvane/platform/atomic_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "orvane/platform/error.h"
#include "orvane/platform/file_descriptor.h"
#include "orvane/platform/file_metadata.h"
#include "orvane/platform/held_signals.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/saved_file_error.h"
#include "orvane/platform/temporary_file.h"
#include "orvane/platform/use_mark.h"

namespace orvane {
namespace {

/// As many links as the system itself follows in one name.
constexpr int kMaximumLinks = 40;

/// A replaced file's content must not be readable by more users than before, not even meanwhile.
constexpr mode_t kPrivateMode = 0600;
/// Less the process's mask, as for any new file.
constexpr mode_t kNewFileMode = 0666;

/// Writing is begun on the disk after so many bytes, so that little is left for the end.
constexpr std::uint64_t kWriteBackBytes = 8 << 20;

constexpr auto kLargestSize = static_cast<std::uint64_t>(INT64_MAX);

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

}  // namespace

struct AtomicFile::State {
  State(const std::filesystem::path& target, Existing existing, std::optional<FileStamp> version);

  /// Does one step of the writing; if it fails, nothing of the new content stays.
  template <typename Step>
  void orDiscard(Step step) {
    precondition(content->isOpen(), "a file is written before its commit and not after");
    try {
      step();
    } catch (...) {
      content->discard();
      throw;
    }
  }

  void openOriginal();
  void put(std::span<const std::byte> bytes, std::uint64_t offset);
  void append(std::span<const std::byte> bytes);
  void reserve(std::uint64_t size);
  void giveBackUnusedSpace() const;
  void commit();
  void takeName();
  void syncDirectory() const;

  std::filesystem::path target;
  Existing existing;
  std::optional<FileStamp> version;  ///< the only one that may be replaced
  std::string name{};                ///< in `directory`, free of links
  FileDescriptor directory{};        ///< so that a folder renamed meanwhile does no harm
  FileDescriptor original{};         ///< what is replaced, if anything
  std::optional<TemporaryFile> content{};
  MetadataLosses losses{};
  std::uint64_t size = 0;
  std::uint64_t reserved = 0;
  std::uint64_t appended = 0;
  std::uint64_t writtenBack = 0;  ///< of what is appended, from the start on
};

AtomicFile::State::State(const std::filesystem::path& path, Existing whenExisting,
                         std::optional<FileStamp> onlyVersion)
    : target(path), existing(whenExisting), version(onlyVersion) {
  const auto resolved = withoutLinks(path);
  name = resolved.filename();
  if (name.empty()) fail(target, path.empty() ? ENOENT : EISDIR);
  const auto folder = resolved.parent_path();
  directory = FileDescriptor(
      ::open(folder.empty() ? "." : folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!directory) fail(target, errno);
  openOriginal();
  content.emplace(directory, name, target, original ? kPrivateMode : kNewFileMode);
}

void AtomicFile::State::openOriginal() {
  original =
      FileDescriptor(openat(directory.number(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!original) {
    if (errno != ENOENT) fail(target, errno);
    if (version) throw TemporaryFile::changedMeanwhile(target);
    return;
  }
  struct stat status {};
  if (fstat(original.number(), &status) != 0) fail(target, errno);
  if (S_ISDIR(status.st_mode)) fail(target, EISDIR);
  if (!S_ISREG(status.st_mode))
    throw PlatformError(target, "Not a regular file",
                        std::make_error_code(std::errc::invalid_argument));
  if (existing == Existing::refuse) fail(target, EEXIST);
  if (version) {
    const auto found = FileStamp::of(original.number());
    if (!found) fail(target, errno);
    if (found != version) throw TemporaryFile::changedMeanwhile(target);
  }
  // Renaming asks only for rights to the folder; a file that is protected itself is none of ours.
  if (faccessat(directory.number(), name.c_str(), W_OK, AT_EACCESS) != 0) fail(target, errno);
}

void AtomicFile::State::put(std::span<const std::byte> bytes, std::uint64_t offset) {
  if (offset > kLargestSize || bytes.size() > kLargestSize - offset) fail(target, EFBIG);
  while (!bytes.empty()) {
    const ssize_t count =
        pwrite(content->descriptor(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0) {
      if (errno == EINTR) continue;
      fail(target, errno);
    }
    bytes = bytes.subspan(static_cast<std::size_t>(count));
    offset += static_cast<std::uint64_t>(count);
    size = std::max(size, offset);
  }
}

void AtomicFile::State::append(std::span<const std::byte> bytes) {
  put(bytes, appended);
  appended += bytes.size();
  if (appended - writtenBack < kWriteBackBytes) return;
  // Where the system cannot do that, the sync at the end does it all.
  (void)sync_file_range(content->descriptor(), static_cast<off_t>(writtenBack),
                        static_cast<off_t>(appended - writtenBack), SYNC_FILE_RANGE_WRITE);
  writtenBack = appended;
}

void AtomicFile::State::reserve(std::uint64_t bytes) {
  if (bytes == 0) return;
  if (bytes > kLargestSize) fail(target, EFBIG);
  int result = 0;
  do {
    result = fallocate(content->descriptor(), FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(bytes));
  } while (result != 0 && errno == EINTR);
  if (result != 0 && errno != EOPNOTSUPP && errno != ENOSYS) fail(target, errno);
  reserved = std::max(reserved, bytes);
}

void AtomicFile::State::giveBackUnusedSpace() const {
  // Cutting a file at its end frees what was reserved behind it.
  if (reserved > size && ftruncate(content->descriptor(), static_cast<off_t>(size)) != 0)
    fail(target, errno);
}

void AtomicFile::State::commit() {
  giveBackUnusedSpace();
  if (original)
    if (const int code = carryOverMetadata(original.number(), content->descriptor(), losses))
      fail(target, code);
  content->sync();
  const HeldSignals held;
  content->finish();
  takeName();
  syncDirectory();
}

void AtomicFile::State::takeName() {
  if (version) return content->replaceVersion(*version);
  existing == Existing::refuse ? content->takeFreeName() : content->replaceAny();
}

void AtomicFile::State::syncDirectory() const {
  const FileDescriptor folder(openat(directory.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder && fsync(folder.number()) == 0) return;
  // A folder that may not be read or a file system without the notion: nothing more can be had.
  const int code = errno;
  if (code == EACCES || code == EINVAL || code == ENOTSUP || code == EBADF) return;
  throw SavedFileError(target, "perhaps not safe against a power failure",
                       std::error_code(code, std::generic_category()));
}

AtomicFile::AtomicFile(const std::filesystem::path& target, Existing existing)
    : state_(std::make_unique<State>(target, existing, std::nullopt)) {}
AtomicFile::AtomicFile(const std::filesystem::path& target, const FileStamp& version)
    : state_(std::make_unique<State>(target, Existing::replace, version)) {}
AtomicFile::~AtomicFile() = default;
AtomicFile::AtomicFile(AtomicFile&& other) noexcept = default;
AtomicFile& AtomicFile::operator=(AtomicFile&& other) noexcept = default;

const std::filesystem::path& AtomicFile::target() const noexcept {
  return state_->target;
}

void AtomicFile::write(std::span<const std::byte> bytes) {
  state_->orDiscard([&] { state_->append(bytes); });
}

void AtomicFile::write(std::string_view text) {
  write(std::as_bytes(std::span(text)));
}

void AtomicFile::writeAt(std::uint64_t offset, std::span<const std::byte> bytes) {
  state_->orDiscard([&] { state_->put(bytes, offset); });
}

void AtomicFile::reserve(std::uint64_t size) {
  state_->orDiscard([&] { state_->reserve(size); });
}

std::filesystem::path AtomicFile::readablePath() const {
  precondition(state_->content->isOpen(), "a file is checked before its commit");
  return state_->content->path();
}

void AtomicFile::commit() {
  state_->orDiscard([&] { state_->commit(); });
}

const MetadataLosses& AtomicFile::losses() const noexcept {
  return state_->losses;
}

MetadataLosses AtomicFile::takeLosses() noexcept {
  return std::move(state_->losses);
}

std::vector<std::filesystem::path> abandonedTemporaries(const std::filesystem::path& folder) {
  // The iterators of the standard library end the process when a name finds no memory.
  struct Close {
    void operator()(DIR* entries) const noexcept { (void)closedir(entries); }
  };
  const std::unique_ptr<DIR, Close> entries(opendir(folder.c_str()));
  std::vector<std::filesystem::path> found;
  while (const dirent* const entry = entries ? readdir(entries.get()) : nullptr) {
    if (!TemporaryFile::isTemporaryName(entry->d_name)) continue;
    auto path = folder / entry->d_name;
    if (UseMark::takeAbandoned(path)) found.push_back(std::move(path));
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
