// Opens arbitrary bytes as an audio file of any kind and reads what comes of it.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "orvane/platform/audio_file/audio_file.h"
#include "orvane/platform/error.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

/// A regular file that never touches a disk.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* bytes, std::size_t size)
      : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    require(descriptor_ >= 0);
    require(write(descriptor_, bytes, size) == static_cast<ssize_t>(size));
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::filesystem::path path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

void readToTheEnd(orvane::AudioFile& file) {
  const auto& format = file.description().dataFormat;
  require(format.channelsPerFrame > 0 && file.frameLength() >= 0);
  const auto buffer = orvane::PCMBuffer::make(file.processingFormat(), 4096);
  require(buffer != nullptr);
  std::int64_t frames = 0;
  do {
    file.read(*buffer);
    frames += buffer->frameLength();
  } while (buffer->frameLength() > 0);
  require(frames <= file.frameLength());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const MemoryFile memory(bytes, size);
  const auto described = orvane::describeAudioFile(memory.path());
  try {
    const auto file = orvane::AudioFile::open(memory.path());
    require(described.has_value());
    require(described->fileTypeID == file->description().fileTypeID);
    readToTheEnd(*file);
  } catch (const orvane::Error& error) {
    require(!error.errorDescription().empty());
  }
  return 0;
}
