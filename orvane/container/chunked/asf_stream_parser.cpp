#include "orvane/container/chunked/asf_stream_parser.h"

#include <algorithm>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/wave_format.h"
#include "orvane/platform/error.h"

namespace orvane {

PCMStream parseASFStream(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kFrame = 12;
  constexpr std::uint64_t kObject = 24;  // GUID, size
  constexpr std::uint32_t kMostObjects = 64;
  // The first half of either GUID tells it from all others.
  constexpr std::uint64_t kStreamProperties = 0x11CFA9B7B7DC0791;
  constexpr std::uint64_t kAudioMedia = 0x11CF5B4DF8699E40;
  const HeaderFields head(file, start + kFrame, kObject + 6, std::endian::little);
  std::uint64_t at = start + kFrame + kObject + 6;
  for (std::uint32_t i = 0; i < std::min(head.u32(kObject), kMostObjects); ++i) {
    const HeaderFields object(file, at, kObject + 62, std::endian::little);
    if (object.u64(0) == kStreamProperties && object.u64(kObject) == kAudioMedia) {
      const std::size_t format = kObject + 54;
      const std::uint32_t channels = object.u16(format + 2);
      PCMStream stream;
      stream.description.fileTypeID = fourCCFrom("ASFS");
      stream.description.layout = monoOrStereoLayout(channels);
      setCompressed(stream, codecOfWaveTag(object.u16(format)), object.u32(format + 4), channels);
      stream.refusal = "ASF network streams can be identified but not read";
      return stream;
    }
    const std::uint64_t size = object.u64(16);
    if (size < kObject || size > file.size() - at) break;
    at += size;
  }
  throw PlatformError(file.path(), "The file holds no audio");
}

}  // namespace orvane
