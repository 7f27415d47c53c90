#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace orvane::fuzz {

/// A file in memory that can be opened by its path; every input is written into the same one.
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
    if (descriptor_ < 0) std::abort();
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::filesystem::path write(const std::uint8_t* bytes, std::size_t size) {
    if (ftruncate(descriptor_, 0) != 0 ||
        pwrite(descriptor_, bytes, size, 0) != static_cast<ssize_t>(size))
      std::abort();
    return "/proc/self/fd/" + std::to_string(descriptor_);
  }

 private:
  int descriptor_;
};

}  // namespace orvane::fuzz
