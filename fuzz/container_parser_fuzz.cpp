// Gives arbitrary bytes to every container parser, and reads the audio that they claim.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "orvane/container/chunked/marker_chunks.h"
#include "orvane/container/container_table.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"
#include "orvane/text/utf8.h"

namespace {

using namespace orvane;
using fuzz::require;

/// What holds for every answer of a parser: nothing lies outside the file.
void checkStream(const PCMStream& stream, const InputFile& file) {
  const StreamDescription& format = stream.description.dataFormat;
  require(stream.chunkList.chunks.size() <= kMaximumChunks);
  for (const Chunk& chunk : stream.chunkList.chunks)
    require(chunk.bodyOffset <= file.size() && chunk.size <= file.size() - chunk.bodyOffset);
  if (format.channelsPerFrame > kMaximumChannels) return;  // refused before it is used
  if (stream.description.layout)
    require(stream.description.layout->labels.size() == format.channelsPerFrame);
  if (format.formatID != kFormatLinearPCM || stream.frameCount == 0) return;
  if (!stream.refusal.empty()) return;  // never read
  require(format.bytesPerFrame == stream.sample.bytes * format.channelsPerFrame);
  require(stream.dataOffset <= file.size());
  require(stream.frameCount >= 0);
  require(static_cast<std::uint64_t>(stream.frameCount) <=
          (file.size() - stream.dataOffset) / format.bytesPerFrame);
}

/// Every parser's chunks are given to every reader of markers.
void checkMarkers(const PCMStream& stream, const InputFile& file) {
  const auto check = [](const std::vector<ChapterMark>& marks) {
    require(marks.size() <= kMaximumEmbeddedChapters);
    for (const ChapterMark& mark : marks) {
      require(std::isfinite(mark.startSeconds) && mark.startSeconds >= 0);
      require(isValidUTF8(mark.name));
    }
  };
  check(MarkerChunks::ofRIFF(file, stream));
  check(MarkerChunks::ofAIFF(file, stream));
  check(MarkerChunks::ofCAF(file, stream));
}

bool isLinearPCM(const InputFile& file, const SniffedContainer& container) {
  const ContainerKind* const kind = containerKind(container.fileTypeID);
  if (kind == nullptr || kind->parse == nullptr) return false;
  return kind->parse(file, container.start).description.dataFormat.formatID == kFormatLinearPCM;
}

void readAudio(const std::filesystem::path& path) {
  const auto file = AudioFile::open(path, {.execution = {.threadCount = 1}});
  const auto buffer =
      PCMBuffer::make(file->processingFormat(), static_cast<std::uint32_t>(file->frameLength()));
  if (!buffer) return;
  file->read(*buffer);
  require(buffer->frameLength() == file->frameLength());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static fuzz::MemoryFile memory;
  const auto path = memory.write(bytes, size);
  const InputFile file(path);
  for (const ContainerKind& kind : containerKinds()) {
    if (kind.parse == nullptr) continue;
    try {
      const PCMStream stream = kind.parse(file, 0);
      checkStream(stream, file);
      checkMarkers(stream, file);
    } catch (const PlatformError&) {
    }
  }
  // Compressed audio is the decoder module's, which has fuzzers of its own.
  try {
    const SniffedContainer container = sniffContainer(file);
    if (isLinearPCM(file, container)) readAudio(path);
  } catch (const PlatformError& error) {
    require(!error.message().empty());
  }
  return 0;
}
