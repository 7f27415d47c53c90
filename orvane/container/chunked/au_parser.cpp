#include "orvane/container/chunked/au_parser.h"

#include <algorithm>
#include <string_view>

#include "orvane/container/chunked/header_fields.h"

namespace orvane {
namespace {

constexpr std::uint32_t kHeaderBytes = 24;
/// Signatures of files with big-endian numbers; the second one is DEC's.
constexpr FourCC kBigEndian = fourCCFrom(".snd");
constexpr FourCC kBigEndianOfDEC = fourCCFrom(std::string_view(".sd\0", 4));

/// Completes `sample` for an encoding that is linear PCM; false for every other one.
bool isLinearPCM(std::uint32_t encoding, SampleEncoding& sample) {
  if (encoding >= 2 && encoding <= 5) {
    sample.bits = (encoding - 1) * 8;
    return true;
  }
  if (encoding != 6 && encoding != 7) return false;
  sample.kind = SampleEncoding::Kind::floatingPoint;
  sample.bits = encoding == 6 ? 32 : 64;
  return true;
}

FourCC codeOf(std::uint32_t encoding) {
  switch (encoding) {
    case 1:
      return fourCCFrom("ulaw");
    case 23:
    case 25:
    case 26:
      return fourCCFrom("g726");  // at 32, 24 and 40 kbit/s, once called G.721 and G.723
    case 24:
      return fourCCFrom("g722");
    case 27:
      return fourCCFrom("alaw");
    default:
      return encoding;
  }
}

}  // namespace

PCMStream parseAU(const InputFile& file, std::uint64_t start) {
  const FourCC signature = HeaderFields(file, start, 4, std::endian::big).fourCC(0);
  const bool isBigEndian = signature == kBigEndian || signature == kBigEndianOfDEC;
  const HeaderFields head(file, start, kHeaderBytes,
                          isBigEndian ? std::endian::big : std::endian::little);
  const std::uint32_t offset = std::max(head.u32(4), kHeaderBytes);
  const std::uint32_t size = head.u32(8);
  const std::uint32_t encoding = head.u32(12);
  StatedFormat stated{.sampleRate = static_cast<double>(head.u32(16)),
                      .channelCount = head.u32(20),
                      .sample = {.isBigEndian = isBigEndian}};

  PCMStream stream;
  stream.description.fileTypeID = fourCCFrom("NeXT");
  stream.description.layout = monoOrStereoLayout(stated.channelCount);
  if (!isLinearPCM(encoding, stated.sample)) {
    setCompressed(stream, codeOf(encoding), stated.sampleRate, stated.channelCount);
    return stream;
  }
  setLinearPCM(stream, stated);
  // All ones is this format's proper "not known"; a 0 comes from writers that were cut off.
  const bool isToTheEnd = size == UINT32_MAX && start + offset < file.size();
  setStatedAudioData(stream, file, start + offset,
                     isToTheEnd ? file.size() - start - offset : std::uint64_t{size});
  return stream;
}

}  // namespace orvane
