#include "orvane/platform/audio_file/au_parser.h"

#include <algorithm>
#include <string_view>

#include "orvane/platform/audio_file/header_fields.h"

namespace orvane {
namespace {

constexpr std::uint32_t kHeaderBytes = 24;
/// Signatures of files with big-endian numbers; the second one is DEC's.
constexpr FourCC kBigEndian = fourCCFrom(".snd");
constexpr FourCC kBigEndianOfDEC = fourCCFrom(std::string_view(".sd\0", 4));

/// Completes `stated` for an encoding that is linear PCM; false for every other one.
bool isLinearPCM(std::uint32_t encoding, StatedFormat& stated) {
  if (encoding >= 2 && encoding <= 5) {
    stated.bits = (encoding - 1) * 8;
    return true;
  }
  if (encoding != 6 && encoding != 7) return false;
  stated.kind = StoredSample::Kind::floatingPoint;
  stated.bits = encoding == 6 ? 32 : 64;
  return true;
}

FourCC codeOf(std::uint32_t encoding) {
  switch (encoding) {
    case 1:
      return fourCCFrom("ulaw");
    case 23:
      return fourCCFrom("G721");
    case 24:
      return fourCCFrom("G722");
    case 25:
      return fourCCFrom("G723");
    case 26:
      return fourCCFrom("G723");
    case 27:
      return fourCCFrom("alaw");
    default:
      return encoding;
  }
}

std::optional<ChannelLayout> defaultLayout(std::uint32_t channels) {
  if (channels == 1) return ChannelLayout::fromTag(ChannelLayoutTags::mono);
  if (channels == 2) return ChannelLayout::fromTag(ChannelLayoutTags::stereo);
  return {};  // the format cannot say
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
                      .isBigEndian = isBigEndian};

  PCMStream stream;
  stream.description.fileTypeID = fourCCFrom("NeXT");
  stream.description.layout = defaultLayout(stated.channelCount);
  if (!isLinearPCM(encoding, stated)) {
    setCompressed(stream, codeOf(encoding), stated.sampleRate, stated.channelCount);
    return stream;
  }
  setLinearPCM(stream, stated);
  const std::uint64_t rest = file.size() - std::min(start + offset, file.size());
  // All ones is this format's proper "not known"; a 0 comes from writers that were cut off.
  auto extent = Chunk::Extent::exact;
  if (size == 0 && rest > 0) extent = Chunk::Extent::open;
  if (size != UINT32_MAX && size > rest) extent = Chunk::Extent::cutShort;
  const bool isToTheEnd = size == 0 || size == UINT32_MAX;
  setAudioData(stream, start + offset, isToTheEnd ? rest : std::min<std::uint64_t>(size, rest),
               extent);
  return stream;
}

}  // namespace orvane
