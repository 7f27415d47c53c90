#include "orvane/container/chunked/wave_file.h"

#include <algorithm>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/wave_format.h"

namespace orvane {
namespace {

constexpr FourCC kDs64 = fourCCFrom("ds64");
/// Identifier, size and form type.
constexpr std::uint64_t kFormHeader = 12;
/// Long sizes are taken from at most this many table entries; real files have a few.
constexpr std::uint32_t kMaximumTableEntries = 4096;

/// The 64-bit sizes of a `ds64` chunk, which comes first. ITU-R BS.2088, 4.2: after the sizes of
/// the form, of the audio and the frame count, a table of identifiers and sizes.
std::vector<std::pair<FourCC, std::uint64_t>> readLongSizes(const InputFile& file,
                                                            std::uint64_t start) {
  const HeaderFields head(file, start + kFormHeader, 8, std::endian::little);
  if (head.size() < 8 || head.fourCC(0) != kDs64) return {};
  const std::uint64_t size =
      std::min<std::uint64_t>(head.u32(4), 28 + std::uint64_t{12} * kMaximumTableEntries);
  const HeaderFields body(file, start + kFormHeader + 8, size, std::endian::little);
  if (body.size() < 16) return {};
  std::vector<std::pair<FourCC, std::uint64_t>> sizes = {{kWaveDataID, body.u64(8)}};
  if (body.size() < 28) return sizes;
  const std::uint32_t entries = std::min(body.u32(24), kMaximumTableEntries);
  for (std::size_t at = 28; sizes.size() <= entries && at + 12 <= body.size(); at += 12)
    sizes.emplace_back(body.fourCC(at), body.u64(at + 4));
  return sizes;
}

}  // namespace

PCMStream parseRIFF(const InputFile& file, std::uint64_t start) {
  const FourCC form = HeaderFields(file, start, 4, std::endian::big).fourCC(0);
  const bool isBigEndian = form == fourCCFrom("RIFX");
  const bool isLong = form == fourCCFrom("RF64") || form == fourCCFrom("BW64");
  ChunkGrammar grammar{.header = ChunkGrammar::Header::riff,
                       .byteOrder = isBigEndian ? std::endian::big : std::endian::little,
                       .audioID = kWaveDataID};
  if (isLong) grammar.longSizes = readLongSizes(file, start);
  return waveStream(file, isLong ? form : fourCCFrom("WAVE"),
                    readChunks(file, start, kFormHeader, grammar));
}

}  // namespace orvane
