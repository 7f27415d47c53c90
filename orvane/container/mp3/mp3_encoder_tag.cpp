#include "orvane/container/mp3/mp3_encoder_tag.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace orvane {
namespace {

/// More than lies before any tag.
constexpr std::size_t kSearchedBytes = 48;

/// What is asked of the tag's end lies there: nothing is read beyond the packet.
struct Fields {
  std::span<const std::byte> bytes;

  bool startsWith(std::string_view text) const {
    return bytes.size() >= text.size() &&
           std::equal(text.begin(), text.end(), bytes.begin(),
                      [](char c, std::byte b) { return static_cast<std::byte>(c) == b; });
  }
  bool has(std::size_t count) const { return bytes.size() >= count; }
  std::uint32_t number(std::size_t at, std::size_t count) const {
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + count; ++i)
      value = value << 8 | std::to_integer<std::uint32_t>(bytes[i]);
    return value;
  }
  void pass(std::size_t count) { bytes = bytes.subspan(std::min(count, bytes.size())); }
};

/// The tag follows where the side information of a packet without a checksum would end.
Fields tagOf(const MP3Packet& packet) {
  MP3Packet plain = packet;
  plain.header.hasChecksum = false;
  return {packet.bytes.subspan(plain.overhead())};
}

/// Whether the encoder is one whose delays are meant so.
bool statesDelays(const Fields& encoder) {
  return encoder.startsWith("LAME") || encoder.startsWith("Lavf") || encoder.startsWith("Lavc");
}

}  // namespace

bool holdsEncoderTag(const MP3Packet& packet) noexcept {
  const auto head = packet.bytes.first(std::min(kSearchedBytes, packet.bytes.size()));
  for (Fields rest{head}; !rest.bytes.empty(); rest.pass(1))
    if (rest.startsWith("Xing") || rest.startsWith("Info") || rest.startsWith("VBRI")) return true;
  return false;
}

std::optional<MP3EncoderTag> readEncoderTag(const MP3Packet& packet) noexcept {
  constexpr std::uint32_t kStatesPackets = 1;
  // Fields that may stand before the encoder's name, by their flags: packets, bytes, places,
  // quality.
  constexpr std::size_t kFieldBytes[] = {4, 4, 100, 4};
  // Behind the encoder's name and eleven bytes of loudness and settings.
  constexpr std::size_t kDelays = 21;
  // Half a window of the filter bank, one sample less: what decoding itself delays.
  constexpr std::int64_t kDecoderDelay = 529;
  Fields fields = tagOf(packet);
  if (!fields.has(12) || !(fields.startsWith("Xing") || fields.startsWith("Info"))) return {};
  const std::uint32_t flags = fields.number(4, 4);
  if ((flags & kStatesPackets) == 0) return {};
  MP3EncoderTag tag{.packetCount = fields.number(8, 4)};
  fields.pass(8);
  for (std::size_t i = 0; i < std::size(kFieldBytes); ++i)
    if ((flags >> i & 1) != 0) fields.pass(kFieldBytes[i]);
  if (!statesDelays(fields)) return tag;
  if (!fields.has(kDelays + 3)) return {};
  const std::uint32_t delays = fields.number(kDelays, 3);
  tag.priming = (delays >> 12) + kDecoderDelay;
  tag.padding = std::max<std::int64_t>((delays & 0xFFF) - kDecoderDelay, 0);
  return tag;
}

}  // namespace orvane
