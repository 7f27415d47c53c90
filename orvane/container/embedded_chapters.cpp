#include "orvane/container/embedded_chapters.h"

#include <algorithm>
#include <bit>

#include "orvane/container/chunked/aiff_parser.h"
#include "orvane/container/chunked/caf_parser.h"
#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/marker_chunks.h"
#include "orvane/container/chunked/riff_parser.h"
#include "orvane/container/compressed_audio_file.h"
#include "orvane/container/sniff/container_sniffer.h"

namespace orvane {
namespace {

std::vector<ChapterMark> unsortedChapters(const InputFile& file) {
  const SniffedContainer container = sniffContainer(file);
  switch (container.fileTypeID) {
    case fourCCFrom("WAVE"):
    case fourCCFrom("RF64"):
    case fourCCFrom("BW64"): {
      const FourCC form = HeaderFields(file, container.start, 4, std::endian::big).fourCC(0);
      const auto order = form == fourCCFrom("RIFX") ? std::endian::big : std::endian::little;
      return MarkerChunks::ofRIFF(file, parseRIFF(file, container.start), order);
    }
    case fourCCFrom("AIFF"):
    case fourCCFrom("AIFC"):
      return MarkerChunks::ofAIFF(file, parseAIFF(file, container.start));
    case fourCCFrom("caff"):
      return MarkerChunks::ofCAF(file, parseCAF(file, container.start));
    case fourCCFrom("W64f"):
    case fourCCFrom("NeXT"):
      return {};
    default:
      return compressedFileChapters(file.path(), container.fileTypeID);
  }
}

}  // namespace

std::vector<ChapterMark> readEmbeddedChapters(const std::filesystem::path& path) {
  auto marks = unsortedChapters(InputFile(path));
  std::stable_sort(marks.begin(), marks.end(), [](const ChapterMark& a, const ChapterMark& b) {
    return a.startSeconds < b.startSeconds;
  });
  return marks;
}

}  // namespace orvane
