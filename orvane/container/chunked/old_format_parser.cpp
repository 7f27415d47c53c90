#include "orvane/container/chunked/old_format_parser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <string_view>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/wave_format.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

using Kind = StoredSample::Kind;

constexpr auto kBig = std::endian::big;
constexpr auto kLittle = std::endian::little;
constexpr double kTelephoneRate = 8000;

PCMStream described(FourCC fileTypeID, std::uint32_t channels) {
  PCMStream stream;
  stream.description.fileTypeID = fileTypeID;
  stream.description.layout = monoOrStereoLayout(channels);
  return stream;
}

PCMStream linearPCM(FourCC fileTypeID, const StatedFormat& stated) {
  PCMStream stream = described(fileTypeID, stated.channelCount);
  setLinearPCM(stream, stated);
  return stream;
}

PCMStream compressed(FourCC fileTypeID, FourCC formatID, double sampleRate,
                     std::uint32_t channels = 1) {
  PCMStream stream = described(fileTypeID, channels);
  setCompressed(stream, formatID, sampleRate, channels);
  return stream;
}

void refuse(PCMStream& stream, const std::string& files) {
  stream.refusal = files + " can be identified but not read";
}

/// Ensoniq PARIS. Everything behind a header of one size is audio.
PCMStream parsePAF(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kHeaderBytes = 2048;
  const bool isBigEndian = HeaderFields(file, start, 4, kBig).fourCC(0) == fourCCFrom(" paf");
  const HeaderFields head(file, start, 24, isBigEndian ? kBig : kLittle);
  constexpr std::array<std::uint32_t, 3> kBits = {16, 24, 8};
  const std::uint32_t format = head.u32(16);
  if (format >= kBits.size()) throw PlatformError(file.path(), "The file's encoding is not known");
  PCMStream stream = linearPCM(fourCCFrom("PAF "), {.sampleRate = static_cast<double>(head.u32(12)),
                                                    .channelCount = head.u32(20),
                                                    .bits = kBits[format],
                                                    .isBigEndian = head.u32(8) == 0});
  const std::uint64_t rest = file.size() - std::min(start + kHeaderBytes, file.size());
  setAudioData(stream, start + kHeaderBytes, rest, Chunk::Extent::exact);
  // Ten of them share 32 bytes, which is no plain row of samples.
  if (kBits[format] == 24) refuse(stream, "PAF files of 24 bits");
  return stream;
}

/// Turtle Beach SampleVision. The rate comes behind the samples, eight loops and eight markers.
PCMStream parseSampleVision(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kHeaderBytes = 112;
  constexpr std::uint64_t kLoopsAndMarkers = 2 + 8 * 11 + 8 * 14;
  const std::uint64_t frames = HeaderFields(file, start + kHeaderBytes, 4, kLittle).u32(0);
  const std::uint64_t data = start + kHeaderBytes + 4;
  const HeaderFields tail(file, data + 2 * frames + kLoopsAndMarkers, 5, kLittle);
  PCMStream stream =
      linearPCM(fourCCFrom("SMP "),
                {.sampleRate = static_cast<double>(tail.u32(1)), .channelCount = 1, .bits = 16});
  setAudioData(stream, data, 2 * frames, Chunk::Extent::exact);
  return stream;
}

/// Sndtool of MS-DOS: bytes, mono.
PCMStream parseSndtool(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kHeaderBytes = 124;
  const HeaderFields head(file, start, 22, kLittle);
  PCMStream stream = linearPCM(fourCCFrom("SNDT"), {.sampleRate = static_cast<double>(head.u16(20)),
                                                    .channelCount = 1,
                                                    .bits = 8,
                                                    .kind = Kind::unsignedInteger});
  setStatedAudioData(stream, file, start + kHeaderBytes, head.u32(8));
  return stream;
}

/// Akai MPC 2000. Programs do not agree on how the two channels of a stereo sample lie.
PCMStream parseMPC2000(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kHeaderBytes = 42;
  const HeaderFields head(file, start, kHeaderBytes, kLittle);
  PCMStream stream = linearPCM(fourCCFrom("MPC2"), {.sampleRate = static_cast<double>(head.u16(40)),
                                                    .channelCount = head.u8(21) + 1U,
                                                    .bits = 16});
  const std::uint64_t frameBytes = stream.description.dataFormat.bytesPerFrame;
  setStatedAudioData(stream, file, start + kHeaderBytes, head.u32(30) * frameBytes);
  if (head.u8(21) != 0) refuse(stream, "Stereo samples of the MPC 2000");
  return stream;
}

/// Waveforms of the speech toolkit HTK; the sample period comes in units of 100 ns.
PCMStream parseHTK(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kHeaderBytes = 12;
  const HeaderFields head(file, start, kHeaderBytes, kBig);
  PCMStream stream = linearPCM(
      fourCCFrom("HTK "),
      {.sampleRate = 1e7 / head.u32(4), .channelCount = 1, .bits = 16, .isBigEndian = true});
  setStatedAudioData(stream, file, start + kHeaderBytes, std::uint64_t{head.u32(0)} * 2);
  return stream;
}

/// Yamaha TX16W: two samples of 12 bits in three bytes. Where the rate's own byte is not known, two
/// bit patterns in the lengths tell it.
PCMStream parseTX16W(const InputFile& file, std::uint64_t start) {
  constexpr std::array<double, 3> kRates = {1e5 / 3, 5e4, 5e4 / 3};
  const HeaderFields head(file, start, 32, kLittle);
  std::size_t rate = head.u8(23) - std::size_t{1};
  if (rate >= kRates.size()) {
    const int attack = head.u8(26) & 0xFE;
    const int repeat = head.u8(29) & 0xFE;
    if (attack == 0x06 && repeat == 0x52) rate = 0;
    if (attack == 0x10 && repeat == 0x00) rate = 1;
    if (attack == 0xF6 && repeat == 0x52) rate = 2;
  }
  if (rate >= kRates.size()) throw PlatformError(file.path(), "The file states no sample rate");
  PCMStream stream =
      linearPCM(fourCCFrom("TXW "), {.sampleRate = kRates[rate], .channelCount = 1, .bits = 12});
  refuse(stream, "TX16W files");
  return stream;
}

/// FastTracker 2. An instrument has a tuning rather than a rate: middle C at 8363 Hz, moved by
/// semitones and their 128ths. The first of its samples stands for all.
PCMStream parseXI(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kFirstSample = 298;
  const HeaderFields counts(file, start + kFirstSample - 2, 2, kLittle);
  if (counts.u16(0) == 0) throw PlatformError(file.path(), "The file holds no audio");
  const HeaderFields sample(file, start + kFirstSample, 17, kLittle);
  const double semitones =
      static_cast<std::int8_t>(sample.u8(16)) + static_cast<std::int8_t>(sample.u8(13)) / 128.0;
  PCMStream stream =
      compressed(fourCCFrom("XI  "), fourCCFrom("dpcm"), 8363 * std::exp2(semitones / 12));
  stream.description.sourceBitDepth = (sample.u8(14) & 0x10) != 0 ? 16 : 8;
  refuse(stream, "XI files");
  return stream;
}

/// Psion Series 3.
PCMStream parseWVE(const InputFile& /*file*/, std::uint64_t /*start*/) {
  return compressed(fourCCFrom("WVE "), fourCCFrom("alaw"), kTelephoneRate);
}

/// Psion Series 5: sections found by a table of identifiers and offsets.
PCMStream parsePsionRecord(const InputFile& file, std::uint64_t start) {
  constexpr std::uint32_t kRecordSection = 0x10000052;
  constexpr std::uint32_t kADPCM = 0x100001A1;
  const std::uint64_t table = start + HeaderFields(file, start, 20, kLittle).u32(16);
  // The table's length counts words of four bytes; each entry takes two.
  const std::uint64_t words = HeaderFields(file, table, 1, kLittle).u8(0);
  const HeaderFields entries(file, table + 1, words * 4, kLittle);
  for (std::size_t at = 0; at + 8 <= entries.size(); at += 8) {
    if (entries.u32(at) != kRecordSection) continue;
    const HeaderFields record(file, start + entries.u32(at + 4), 8, kLittle);
    const std::uint32_t encoding = record.u32(4);
    if (encoding != 0 && encoding != kADPCM)
      throw PlatformError(file.path(), "The file's encoding is not known");
    PCMStream stream =
        compressed(fourCCFrom("PRC "), fourCCFrom(encoding == 0 ? "alaw" : "ima4"), kTelephoneRate);
    refuse(stream, "Psion records");
    return stream;
  }
  throw PlatformError(file.path(), "The file holds no audio");
}

/// Ring tones of Grandstream telephones; encodings are named by the payload types of RFC 3551.
PCMStream parseRingTone(const InputFile& file, std::uint64_t start) {
  const HeaderFields head(file, start, 34, kBig);
  const auto formatID = [&]() -> FourCC {
    switch (head.u16(32)) {
      case 0:
        return fourCCFrom("ulaw");
      case 8:
        return fourCCFrom("alaw");
      default:
        throw PlatformError(file.path(), "The file's encoding is not known");
    }
  };
  PCMStream stream = compressed(fourCCFrom("GSRT"), formatID(), kTelephoneRate);
  refuse(stream, "Ring tones of this kind");
  return stream;
}

/// Voice messages in CVSD, one bit to the sample; the rate comes in units of 100 Hz.
PCMStream parseDVMS(const InputFile& file, std::uint64_t start) {
  const HeaderFields head(file, start, 32, kLittle);
  PCMStream stream = compressed(fourCCFrom("DVMS"), fourCCFrom("cvsd"), head.u16(30) * 100.0);
  refuse(stream, "DVMS files");
  return stream;
}

/// SoX's table of times and samples in text: "; Sample Rate 44100", "; Channels 2".
PCMStream parseTextTable(const InputFile& file, std::uint64_t start) {
  std::array<std::byte, 128> bytes{};
  const std::size_t size = file.readAt(start, bytes);
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), size);
  const auto numberBehind = [&](std::string_view label) {
    double value = 0;
    const std::size_t at = text.find(label);
    if (at != std::string_view::npos)
      std::from_chars(text.data() + at + label.size(), text.data() + text.size(), value);
    return value;
  };
  const double rate = numberBehind("; Sample Rate ");
  const double channels = numberBehind("\n; Channels ");
  if (!(rate > 0 && channels >= 1 && channels <= kMaximumChannels))
    throw PlatformError(file.path(), "The file does not describe its audio");
  PCMStream stream = compressed(fourCCFrom("DAT "), fourCCFrom("text"), rate,
                                static_cast<std::uint32_t>(channels));
  refuse(stream, "Text files of samples");
  return stream;
}

/// An ASF file as it is sent over a network: its header object in a frame of 12 bytes. The first
/// audio stream's properties hold the format of a WAVE file.
PCMStream parseASFStream(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kFrame = 12;
  constexpr std::uint64_t kObject = 24;  // GUID, size
  constexpr std::uint32_t kMostObjects = 64;
  // The first half of either GUID tells it from all others.
  constexpr std::uint64_t kStreamProperties = 0x11CFA9B7B7DC0791;
  constexpr std::uint64_t kAudioMedia = 0x11CF5B4DF8699E40;
  const HeaderFields head(file, start + kFrame, kObject + 6, kLittle);
  std::uint64_t at = start + kFrame + kObject + 6;
  for (std::uint32_t i = 0; i < std::min(head.u32(kObject), kMostObjects); ++i) {
    const HeaderFields object(file, at, kObject + 62, kLittle);
    if (object.u64(0) == kStreamProperties && object.u64(kObject) == kAudioMedia) {
      const std::size_t format = kObject + 54;
      PCMStream stream = compressed(fourCCFrom("ASFS"), codecOfWaveTag(object.u16(format)),
                                    object.u32(format + 4), object.u16(format + 2));
      refuse(stream, "ASF network streams");
      return stream;
    }
    const std::uint64_t size = object.u64(16);
    if (size < kObject || size > file.size() - at) break;
    at += size;
  }
  throw PlatformError(file.path(), "The file holds no audio");
}

}  // namespace

OldFormatParser oldFormatParser(FourCC fileTypeID) {
  switch (fileTypeID) {
    case fourCCFrom("PAF "):
      return parsePAF;
    case fourCCFrom("SMP "):
      return parseSampleVision;
    case fourCCFrom("SNDT"):
      return parseSndtool;
    case fourCCFrom("MPC2"):
      return parseMPC2000;
    case fourCCFrom("HTK "):
      return parseHTK;
    case fourCCFrom("TXW "):
      return parseTX16W;
    case fourCCFrom("XI  "):
      return parseXI;
    case fourCCFrom("WVE "):
      return parseWVE;
    case fourCCFrom("PRC "):
      return parsePsionRecord;
    case fourCCFrom("GSRT"):
      return parseRingTone;
    case fourCCFrom("DVMS"):
      return parseDVMS;
    case fourCCFrom("ASFS"):
      return parseASFStream;
    case fourCCFrom("DAT "):
      return parseTextTable;
    default:
      return nullptr;
  }
}

}  // namespace orvane
