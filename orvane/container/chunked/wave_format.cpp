#include "orvane/container/chunked/wave_format.h"

#include <algorithm>
#include <array>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// Bytes of a format chunk's body that are of use.
constexpr std::uint64_t kFormatBytes = 40;

/// Speaker masks that files without one are taken to have, by channel count from 1 on. Channels
/// beyond eight have no common order.
constexpr std::array<std::uint32_t, 8> kDefaultMasks = {0x4,  0x3,  0x7,   0x33,
                                                        0x37, 0x3F, 0x70F, 0x63F};

/// What lies behind the basic fields of an extensible format.
struct Extension {
  std::uint16_t tag = 0;
  std::uint16_t validBits = 0;
  std::uint32_t mask = 0;
};

/// The format tag in a sub-format GUID, 0 for a GUID that is none of the known families. The two
/// families share all but their last ten bytes: XXXX-0000-0010-8000-00AA00389B71, and that of
/// ambisonic B-format, XXXX-0721-11D3-8644-C8C1CA000000.
std::uint16_t tagOfGuid(const HeaderFields& body) {
  constexpr std::array<std::uint8_t, 14> kPlain = {0, 0, 0,    0, 0x10, 0,    0x80,
                                                   0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
  constexpr std::array<std::uint8_t, 14> kPlainBigEndian = {0, 1, 0,    0,    0,    0x10, 0x80,
                                                            0, 0, 0xAA, 0x00, 0x38, 0x9B, 0x71};
  constexpr std::array<std::uint8_t, 14> kAmbisonic = {0,    0,    0x21, 0x07, 0xD3, 0x11, 0x86,
                                                       0x44, 0xC8, 0xC1, 0xCA, 0,    0,    0};
  const auto endsWith = [&](const std::array<std::uint8_t, 14>& tail, std::size_t from) {
    for (std::size_t i = from; i < tail.size(); ++i)
      if (body.u8(26 + i) != tail[i]) return false;
    return true;
  };
  if (endsWith(kPlain, 0) || endsWith(kAmbisonic, 0)) return body.u16(24);
  // In RIFX some writers also turn round the GUID's own numbers.
  if (endsWith(kPlainBigEndian, 2)) return static_cast<std::uint16_t>(body.u32(24));
  return 0;
}

Extension readExtension(const HeaderFields& body) {
  return {.tag = tagOfGuid(body), .validBits = body.u16(18), .mask = body.u32(20)};
}

/// Fills the stream's format and layout from the body of a format chunk.
void applyFormat(PCMStream& stream, const HeaderFields& body, bool isBigEndian) {
  std::uint16_t tag = body.u16(0);
  const std::uint32_t channels = body.u16(2);
  const double sampleRate = body.u32(4);
  const std::uint32_t blockAlign = body.u16(12);
  // Ancient headers of 14 bytes leave the depth to the frame size.
  const std::uint32_t storedBits =
      body.size() >= 16 ? body.u16(14) : (channels == 0 ? 0 : blockAlign / channels * 8);
  StatedFormat stated{.sampleRate = sampleRate, .channelCount = channels};
  SampleEncoding& sample = stated.sample;
  sample.bits = storedBits;
  sample.isBigEndian = isBigEndian;
  bool hasOwnMask = false;
  std::uint32_t mask = 0;
  if (isExtensibleWave(body)) {
    const Extension extension = readExtension(body);
    tag = extension.tag;
    mask = extension.mask;
    hasOwnMask = true;
    if (extension.validBits > 0 && extension.validBits < storedBits)
      sample.bits = extension.validBits;
  } else if (tag == kWaveTagExtensible) {
    tag = kWaveTagPCM;  // the extension is missing; integers are what such files hold
  }
  if (tag == kWaveTagPCM || tag == kWaveTagFloat) {
    // The frame size is often wrong; it counts where it says that 24-bit samples take four bytes.
    sample.bytes = (storedBits + 7) / 8;
    if (sample.bytes == 3 && blockAlign == 4 * channels) sample.bytes = 4;
    if (tag == kWaveTagFloat) {
      sample.kind = SampleEncoding::Kind::floatingPoint;
      sample.bits = storedBits;
    } else if (storedBits <= 8) {
      sample.kind = SampleEncoding::Kind::unsignedInteger;
    }
    setLinearPCM(stream, stated);
  } else {
    setCompressed(stream, codecOfWaveTag(tag), sampleRate, channels);
  }
  if (!hasOwnMask && channels >= 1 && channels <= kDefaultMasks.size())
    mask = kDefaultMasks[channels - 1];
  stream.description.layout = ChannelLayout::fromWaveMask(mask, channels);
}

}  // namespace

bool isExtensibleWave(const HeaderFields& format) {
  return format.u16(0) == kWaveTagExtensible && format.size() >= kFormatBytes;
}

FourCC codecOfWaveTag(std::uint16_t tag) {
  switch (tag) {
    case 0x0002:
      return fourCCFrom("msad");  // Microsoft ADPCM
    case 0x0006:
      return fourCCFrom("alaw");
    case 0x0007:
      return fourCCFrom("ulaw");
    case 0x0011:
      return fourCCFrom("ima4");
    case 0x0014:
    case 0x0040:
    case 0x0045:
      return fourCCFrom("g726");  // the first two once called G.723 and G.721
    case 0x0031:
      return fourCCFrom("agsm");
    case 0x0050:
      return fourCCFrom(".mp2");
    case 0x0055:
      return fourCCFrom(".mp3");
    case 0x00FF:
    case 0x1600:
    case 0x1610:
      return fourCCFrom("aac ");
    case 0x0160:
      return fourCCFrom("wma1");
    case 0x0161:
      return fourCCFrom("wma2");
    case 0x0162:
      return fourCCFrom("wmap");
    case 0x0163:
      return fourCCFrom("wmal");
    case 0x2000:
      return fourCCFrom("ac-3");
    case 0xF1AC:
      return fourCCFrom("flac");
    default:
      return tag;
  }
}

PCMStream waveStream(const InputFile& file, FourCC fileTypeID, ChunkList list) {
  const std::endian byteOrder = list.grammar.byteOrder;
  PCMStream stream;
  stream.description.fileTypeID = fileTypeID;
  const Chunk* const format = list.find(kWaveFormatID);
  if (format == nullptr) throw PlatformError(file.path(), "The file does not describe its audio");
  const HeaderFields body(file, format->bodyOffset, std::min(format->size, kFormatBytes),
                          byteOrder);
  applyFormat(stream, body, byteOrder == std::endian::big);
  if (const Chunk* const data = list.find(kWaveDataID)) {
    setAudioData(stream, data->bodyOffset, data->size, data->extent);
    if (list.count(kWaveDataID) > 1) addWarning(stream, AudioFileWarning::Code::severalDataChunks);
    if (data->headerOffset < format->headerOffset)
      addWarning(stream, AudioFileWarning::Code::unusualLayout);
  }
  if (list.hasMissingPad) addWarning(stream, AudioFileWarning::Code::unusualLayout);
  stream.chunkList = std::move(list);
  return stream;
}

}  // namespace orvane
