// Gives arbitrary bytes to every container parser, and reads the audio that they claim.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "orvane/container/chunked/aiff_parser.h"
#include "orvane/container/chunked/au_parser.h"
#include "orvane/container/chunked/caf_parser.h"
#include "orvane/container/chunked/marker_chunks.h"
#include "orvane/container/chunked/matlab_parser.h"
#include "orvane/container/chunked/old_format_parser.h"
#include "orvane/container/chunked/riff_parser.h"
#include "orvane/container/chunked/wave64_parser.h"
#include "orvane/container/embedded_chapters.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"
#include "orvane/text/utf8.h"

namespace {

using namespace orvane;
using fuzz::require;

/// What holds for every answer of a parser: nothing lies outside the file.
void checkStream(const PCMStream& stream, const InputFile& file) {
  const StreamDescription& format = stream.description.dataFormat;
  require(stream.chunks.size() <= kMaximumChunks);
  for (const Chunk& chunk : stream.chunks)
    require(chunk.bodyOffset <= file.size() && chunk.size <= file.size() - chunk.bodyOffset);
  if (format.channelsPerFrame > kMaximumChannels) return;  // refused before it is used
  if (stream.description.layout)
    require(stream.description.layout->labels.size() == format.channelsPerFrame);
  if (format.formatID != kFormatLinearPCM || stream.frameCount == 0) return;
  if (!stream.refusal.empty()) return;  // never read
  require(format.bytesPerFrame == stream.sample.bytes * format.channelsPerFrame);
  require(stream.dataOffset <= file.size());
  require(stream.frameCount <= (file.size() - stream.dataOffset) / format.bytesPerFrame);
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
  check(MarkerChunks::ofRIFF(file, stream, std::endian::little));
  check(MarkerChunks::ofRIFF(file, stream, std::endian::big));
  check(MarkerChunks::ofAIFF(file, stream));
  check(MarkerChunks::ofCAF(file, stream));
}

/// The codes of the old formats of which some files can be read.
constexpr std::array kOldPCM = {fourCCFrom("PAF "), fourCCFrom("SMP "), fourCCFrom("SNDT"),
                                fourCCFrom("MPC2"), fourCCFrom("HTK ")};
/// And of those that are only described.
constexpr std::array kOldOthers = {fourCCFrom("TXW "), fourCCFrom("XI  "), fourCCFrom("WVE "),
                                   fourCCFrom("PRC "), fourCCFrom("GSRT"), fourCCFrom("DVMS"),
                                   fourCCFrom("DAT "), fourCCFrom("ASFS")};

bool isMATLAB(FourCC container) {
  return container == fourCCFrom("MAT4") || container == fourCCFrom("MAT5");
}

bool isOldPCM(FourCC container) {
  return std::find(kOldPCM.begin(), kOldPCM.end(), container) != kOldPCM.end();
}

bool isLinearPCM(const InputFile& file, FourCC container, std::uint64_t start) {
  switch (container) {
    case fourCCFrom("WAVE"):
    case fourCCFrom("RF64"):
    case fourCCFrom("BW64"):
      return parseRIFF(file, start).description.dataFormat.formatID == kFormatLinearPCM;
    case fourCCFrom("W64f"):
      return parseWave64(file, start).description.dataFormat.formatID == kFormatLinearPCM;
    case fourCCFrom("AIFF"):
    case fourCCFrom("AIFC"):
      return parseAIFF(file, start).description.dataFormat.formatID == kFormatLinearPCM;
    case fourCCFrom("caff"):
      return parseCAF(file, start).description.dataFormat.formatID == kFormatLinearPCM;
    case fourCCFrom("NeXT"):
      return parseAU(file, start).description.dataFormat.formatID == kFormatLinearPCM;
    default:  // opened without a decoder, whatever becomes of it
      return isMATLAB(container) || isOldPCM(container);
  }
}

void readAudio(const std::filesystem::path& path) {
  const auto file = AudioFile::open(path, {.threadCount = 1});
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
  std::vector<OldFormatParser> parsers = {parseRIFF, parseWave64,  parseAIFF,   parseCAF,
                                          parseAU,   parseMATLAB4, parseMATLAB5};
  for (const FourCC code : kOldPCM) parsers.push_back(oldFormatParser(code));
  for (const FourCC code : kOldOthers) parsers.push_back(oldFormatParser(code));
  for (const OldFormatParser parse : parsers) {
    try {
      const PCMStream stream = parse(file, 0);
      checkStream(stream, file);
      checkMarkers(stream, file);
    } catch (const PlatformError&) {
    }
  }
  // Compressed audio is the decoder module's, which has fuzzers of its own.
  try {
    const SniffedContainer container = sniffContainer(file);
    if (isLinearPCM(file, container.fileTypeID, container.start)) readAudio(path);
  } catch (const PlatformError& error) {
    require(!error.message().empty());
  }
  return 0;
}
