// Opens arbitrary bytes as an audio file of any kind and reads what comes of it.
#include <cstddef>
#include <cstdint>

#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "orvane/container/audio_file.h"
#include "orvane/platform/error.h"

namespace {

using orvane::fuzz::require;

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
  static orvane::fuzz::MemoryFile memory;
  const auto path = memory.write(bytes, size);
  const auto described = orvane::describeAudioFile(path);
  try {
    const auto file = orvane::AudioFile::open(path);
    require(described.has_value());
    require(described->fileTypeID == file->description().fileTypeID);
    readToTheEnd(*file);
  } catch (const orvane::Error& error) {
    require(!error.errorDescription().empty());
  }
  return 0;
}
