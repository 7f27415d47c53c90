#include "orvane/container/sniff/container_sniffer.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/container/sniff/frame_sync.h"
#include "orvane/container/sniff/iso_media.h"
#include "orvane/container/sniff/size_sniffer.h"
#include "orvane/container/sniff/text_sniffer.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;
using Bytes = std::span<const std::byte>;

/// Enough for four of the longest frames of any stream without a container.
constexpr std::size_t kHeadBytes = 65'536;
/// Tags before the audio that are skipped; one is usual.
constexpr int kMaximumTags = 8;

/// Fixed bytes at fixed places. Codes that Core Audio does not have are our own.
struct Signature {
  std::string_view code;
  std::size_t offset = 0;
  std::string_view bytes{};
  std::size_t secondOffset = 0;
  std::string_view secondBytes{};
};

constexpr auto kWave64Riff = "riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0"sv;
constexpr auto kWave64Wave = "wave\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A"sv;
constexpr auto kASFHeader = "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\0\xAA\0\x62\xCE\x6C"sv;

constexpr Signature kSignatures[] = {
    {"WAVE", 0, "RIFF", 8, "WAVE"},
    {"WAVE", 0, "RIFX", 8, "WAVE"},
    {"RF64", 0, "RF64", 8, "WAVE"},
    {"BW64", 0, "BW64", 8, "WAVE"},
    {"W64f", 0, kWave64Riff, 24, kWave64Wave},
    {"AIFF", 0, "FORM", 8, "AIFF"},
    {"AIFC", 0, "FORM", 8, "AIFC"},
    {"caff", 0, "caff\0\1"sv},
    {"NeXT", 0, ".snd"},
    {"NeXT", 0, "dns."},
    {"NeXT", 0, "\0ds."sv},
    {"NeXT", 0, ".sd\0"sv},
    {"flac", 0, "fLaC"},
    {"Oggf", 0, "OggS"},
    {"amrf", 0, "#!AMR\n"},
    {"amrf", 0, "#!AMR-WB\n"},
    {"amrf", 0, "#!AMR_MC1.0\n"},
    {"amrf", 0, "#!AMR-WB_MC1.0\n"},
    // Video and streaming containers.
    {"AVI ", 0, "RIFF", 8, "AVI "},
    {"AMV ", 0, "RIFF", 8, "AMV "},
    {"ASF ", 0, kASFHeader},
    {"ASFS", 0, "$H", 12, kASFHeader},
    {"FLV ", 0, "FLV\1"},
    {"RM  ", 0, ".RMF"},
    {"RA  ", 0, ".ra\xFD"},
    {"MPEG", 0, "\0\0\1\xBA"sv},
    {"MXF ", 0, "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01"},
    {"NUT ", 0, "nut/multimedia container\0"sv},
    {"SWF ", 0, "FWS"},
    // Lossless codecs with containers of their own.
    {"WV  ", 0, "wvpk"},
    {"TTA ", 0, "TTA1"},
    {"TTA ", 0, "TTA2"},
    {"APE ", 0, "MAC "},
    {"TAK ", 0, "tBaK"},
    {"OFR ", 0, "OFR "},
    {"SHN ", 0, "ajkg"},
    {"LA  ", 0, "LA0"},
    {"DSF ", 0, "DSD ", 28, "fmt "},
    {"DFF ", 0, "FRM8", 12, "DSD "},
    // Lossy ones.
    {"MPC ", 0, "MP+"},
    {"MPC ", 0, "MPCK"},
    {"DTS ", 0, "\x7F\xFE\x80\x01"},
    {"DTS ", 0, "\xFE\x7F\x01\x80"},
    {"DTS ", 0, "\x1F\xFF\xE8\x00"sv},
    {"DTS ", 0, "\xFF\x1F\x00\xE8"sv},
    {"DTS ", 0, "DTSHDHDR"},
    {"THD ", 4, "\xF8\x72\x6F\xBA"},
    {"MLP ", 4, "\xF8\x72\x6F\xBB"},
    {"QCP ", 0, "RIFF", 8, "QLCM"},
    {"XWMA", 0, "RIFF", 8, "XWMA"},
    {"OMA ", 0, "ea3\3"},
    {"OMA ", 0, "EA3\1"},
    {"aptX", 0, "\x4B\xBF\x4B\xBF"},
    // Formats of old machines and of laboratories.
    {"VOC ", 0, "Creative Voice File\x1A"},
    {"8SVX", 0, "FORM", 8, "8SVX"},
    {"16SV", 0, "FORM", 8, "16SV"},
    {"MAUD", 0, "FORM", 8, "MAUD"},
    {"IRCM", 0, "\x64\xA3\x01\x00"sv},
    {"IRCM", 0, "\x64\xA3\x02\x00"sv},
    {"IRCM", 0, "\x64\xA3\x03\x00"sv},
    {"IRCM", 0, "\x64\xA3\x04\x00"sv},
    {"IRCM", 0, "\x00\x01\xA3\x64"sv},
    {"IRCM", 0, "\x00\x02\xA3\x64"sv},
    {"IRCM", 0, "\x00\x03\xA3\x64"sv},
    {"IRCM", 0, "\x00\x04\xA3\x64"sv},
    {"NIST", 0, "NIST_1A\n"},
    {"PAF ", 0, " paf"},
    {"PAF ", 0, "fap "},
    {"PVF ", 0, "PVF1\n"},
    {"AVR ", 0, "2BIT"},
    {"SDS ", 0, "\xF0\x7E", 3, "\x01"},
    {"SoX ", 0, ".SoX"},
    {"SoX ", 0, "XoS."},
    {"HCOM", 65, "FSSD", 128, "HCOM"},
    {"MAT4", 0, "\0\0\0\0\1\0\0\0"sv, 8, "\1\0\0\0\0\0\0\0"sv},
    {"MAT4", 0, "\0\0\x03\xE8\0\0\0\1"sv, 8, "\0\0\0\1\0\0\0\0"sv},
    {"MAT5", 0, "MATLAB 5.0 MAT-file"},
    {"XI  ", 0, "Extended Instrument: "},
    {"WVE ", 0, "ALawSoundFile**\0"sv},
    {"SMP ", 0, "SOUND SAMPLE DATA "},
    {"SNDT", 0, "SOUND\x1A"},
    {"TXW ", 0, "LM8953"},
    {"PRC ", 0, "\x37\0\0\x10\x6D\0\0\x10\x7E\0\0\x10"sv},
    {"GSRT", 6, "\1\0\0\0"sv, 16, "ring.bin\0"sv},
    {"DAT ", 0, "; Sample Rate "},
};

bool hasAt(Bytes head, std::size_t offset, std::string_view bytes) {
  return head.size() >= offset && head.size() - offset >= bytes.size() &&
         std::equal(bytes.begin(), bytes.end(), head.begin() + static_cast<std::ptrdiff_t>(offset),
                    [](char c, std::byte b) { return static_cast<std::byte>(c) == b; });
}

std::optional<FourCC> sniffSignature(Bytes head) {
  for (const Signature& signature : kSignatures)
    if (hasAt(head, signature.offset, signature.bytes) &&
        hasAt(head, signature.secondOffset, signature.secondBytes))
      return fourCCFrom(signature.code);
  return {};
}

/// Matroska and WebM share the EBML header and differ in its document type.
std::optional<FourCC> sniffEBML(Bytes head) {
  if (!hasAt(head, 0, "\x1A\x45\xDF\xA3")) return {};
  for (std::size_t at = 4; at < std::min<std::size_t>(head.size(), 256); ++at)
    if (hasAt(head, at, "\x42\x82") && hasAt(head, at + 3, "webm")) return fourCCFrom("WebM");
  return fourCCFrom("MKV ");
}

/// MPEG transport streams: packets of 188 bytes, or of 192 with a time stamp before each.
std::optional<FourCC> sniffTransportStream(Bytes head) {
  constexpr std::size_t kPackets = 5;
  const auto isStream = [&](std::size_t first, std::size_t distance) {
    if (head.size() < first + kPackets * distance) return false;
    for (std::size_t i = 0; i < kPackets; ++i)
      if (head[first + i * distance] != std::byte{0x47}) return false;
    return true;
  };
  if (isStream(0, 188) || isStream(4, 192)) return fourCCFrom("MPTS");
  return {};
}

std::vector<std::byte> headAt(const InputFile& file, std::uint64_t offset) {
  const std::uint64_t present = offset < file.size() ? file.size() - offset : 0;
  std::vector<std::byte> head(
      static_cast<std::size_t>(std::min<std::uint64_t>(present, kHeadBytes)));
  head.resize(file.readAt(offset, head));
  return head;
}

/// Bytes of an ID3v2 tag at the start (id3.org, ID3v2.4, 3.1), 0 when there is none. Its size has
/// seven bits to the byte; version 4 may repeat the header at the end.
std::uint64_t tagBytes(Bytes head) {
  if (!hasAt(head, 0, "ID3") || head.size() < 10) return 0;
  std::uint64_t size = 0;
  for (std::size_t i = 6; i < 10; ++i) {
    const auto byte = std::to_integer<std::uint64_t>(head[i]);
    if (byte > 127) return 0;
    size = size << 7 | byte;
  }
  const bool hasFooter = (head[5] & std::byte{0x10}) != std::byte{0};
  return 10 + size + (hasFooter ? 10 : 0);
}

}  // namespace

SniffedContainer sniffContainer(const InputFile& file) {
  using enum SniffedContainer::Kind;
  std::uint64_t start = 0;
  std::vector<std::byte> head = headAt(file, 0);
  for (int tags = 0; tags < kMaximumTags; ++tags) {
    const std::uint64_t skip = tagBytes(head);
    if (skip == 0) break;
    start += skip;
    head = headAt(file, start);
  }
  const bool isWhole = start + head.size() >= file.size();
  std::optional<FourCC> code = sniffSignature(head);
  if (!code) code = sniffEBML(head);
  if (!code) code = sniffISOMedia(head);
  if (!code) code = sniffTransportStream(head);
  if (!code) code = sniffBySize(head, file.size() - std::min(start, file.size()));
  if (!code && isText(head)) {
    return {.kind = isPlaylistText(head) ? playlist : text, .fileTypeID = 0, .start = start};
  }
  if (!code) code = sniffFrames(head, isWhole);
  return {.kind = code ? audio : unknown, .fileTypeID = code.value_or(0), .start = start};
}

}  // namespace orvane
