#include "orvane/platform/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "orvane/platform/error.h"

namespace orvane {
namespace {

std::error_code lastError() {
  return {errno, std::generic_category()};
}

}  // namespace

InputFile::InputFile(const std::filesystem::path& path) : path_(path) {
  // Non-blocking, because opening a FIFO without a writer would otherwise wait for one.
  descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (descriptor_ < 0) throw PlatformError(path, lastError());
  struct stat status {};
  if (fstat(descriptor_, &status) != 0) {
    const auto code = lastError();
    ::close(descriptor_);
    throw PlatformError(path, code);
  }
  if (!S_ISREG(status.st_mode)) {
    ::close(descriptor_);
    if (S_ISDIR(status.st_mode))
      throw PlatformError(path, std::make_error_code(std::errc::is_a_directory));
    throw PlatformError(path, "Not a regular file",
                        std::make_error_code(std::errc::invalid_argument));
  }
  stamp_ = FileStamp::of(status);
}

InputFile::~InputFile() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

InputFile::InputFile(InputFile&& other) noexcept
    : path_(std::move(other.path_)),
      descriptor_(std::exchange(other.descriptor_, -1)),
      stamp_(other.stamp_) {}

std::size_t InputFile::readAt(std::uint64_t offset, std::span<std::byte> destination) const {
  std::size_t done = 0;
  while (done < destination.size()) {
    // Offsets beyond what the system can address lie beyond any file's end.
    if (offset + done > static_cast<std::uint64_t>(INT64_MAX)) break;
    const ssize_t count = pread(descriptor_, destination.data() + done, destination.size() - done,
                                static_cast<off_t>(offset + done));
    if (count == 0) break;
    if (count < 0) {
      if (errno == EINTR) continue;
      throw PlatformError(path_, lastError());
    }
    done += static_cast<std::size_t>(count);
  }
  return done;
}

void InputFile::readExactlyAt(std::uint64_t offset, std::span<std::byte> destination) const {
  if (readAt(offset, destination) != destination.size())
    throw PlatformError(path_, "The file ended while it was being read");
}

}  // namespace orvane
