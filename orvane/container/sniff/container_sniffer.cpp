#include "orvane/container/sniff/container_sniffer.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/container/container_table.h"
#include "orvane/container/sniff/frame_sync.h"
#include "orvane/container/sniff/id3v2_tag.h"
#include "orvane/container/sniff/iso_media.h"
#include "orvane/container/sniff/text_sniffer.h"

namespace orvane {
namespace {

using Bytes = std::span<const std::byte>;

/// Enough for four of the longest frames of any stream without a container.
constexpr std::size_t kHeadBytes = 65'536;

bool hasAt(Bytes head, std::size_t offset, std::string_view bytes) {
  return head.size() >= offset && head.size() - offset >= bytes.size() &&
         std::equal(bytes.begin(), bytes.end(), head.begin() + static_cast<std::ptrdiff_t>(offset),
                    [](char c, std::byte b) { return static_cast<std::byte>(c) == b; });
}

std::optional<FourCC> sniffSignature(Bytes head) {
  for (const ContainerKind& kind : containerKinds())
    for (const Signature& signature : kind.signatures)
      if (hasAt(head, signature.offset, signature.bytes) &&
          hasAt(head, signature.secondOffset, signature.secondBytes))
        return kind.code;
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

/// RSO sounds have no signature worth the name but state their size, which must hold to the byte:
/// plain samples, not looped.
std::optional<FourCC> sniffRSO(Bytes head, std::uint64_t size) {
  constexpr std::size_t kHeader = 8;
  if (head.size() < kHeader) return {};
  const auto field = [&](std::size_t at) {
    return std::to_integer<unsigned>(head[at]) << 8 | std::to_integer<unsigned>(head[at + 1]);
  };
  const bool isRSO = field(0) == 0x0100 && field(2) > 0 && size == kHeader + field(2) &&
                     field(4) > 0 && field(6) == 0;
  return isRSO ? std::optional(fourCCFrom("RSO ")) : std::nullopt;
}

std::vector<std::byte> headAt(const InputFile& file, std::uint64_t offset) {
  const std::uint64_t present = offset < file.size() ? file.size() - offset : 0;
  std::vector<std::byte> head(
      static_cast<std::size_t>(std::min<std::uint64_t>(present, kHeadBytes)));
  head.resize(file.readAt(offset, head));
  return head;
}

}  // namespace

SniffedContainer sniffContainer(const InputFile& file) {
  using enum SniffedContainer::Kind;
  const std::uint64_t start = endOfID3v2Tags(file);
  const std::vector<std::byte> head = headAt(file, start);
  const bool isWhole = start + head.size() >= file.size();
  std::optional<FourCC> code = sniffSignature(head);
  if (!code) code = sniffEBML(head);
  if (!code) code = sniffISOMedia(head);
  if (!code) code = sniffTransportStream(head);
  if (!code) code = sniffRSO(head, file.size() - std::min(start, file.size()));
  if (!code && isText(head)) {
    return {.kind = isPlaylistText(head) ? playlist : text, .fileTypeID = 0, .start = start};
  }
  if (!code) code = sniffFrames(head, isWhole);
  return {.kind = code ? audio : unknown, .fileTypeID = code.value_or(0), .start = start};
}

}  // namespace orvane
