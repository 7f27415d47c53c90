#include "orvane/container/mp3/mp3_packet.h"

namespace orvane {
namespace {

constexpr std::size_t kHeaderBytes = 4;
constexpr std::size_t kChecksumBytes = 2;

/// Takes numbers of up to 16 bits off a string of bits, which zeros follow.
class Bits {
 public:
  explicit Bits(std::span<const std::byte> bytes) : bytes_(bytes) {}

  std::uint32_t take(std::size_t count) noexcept {
    std::uint32_t window = 0;
    for (std::size_t i = position_ / 8; i < position_ / 8 + 3; ++i)
      window = window << 8 | (i < bytes_.size() ? std::to_integer<std::uint32_t>(bytes_[i]) : 0);
    const std::size_t below = 24 - position_ % 8 - count;
    position_ += count;
    return window >> below & ((1U << count) - 1);
  }
  void pass(std::size_t count) noexcept { position_ += count; }

 private:
  std::span<const std::byte> bytes_;
  std::size_t position_ = 0;
};

std::size_t sideInformationBytes(const MPEGFrameHeader& header) {
  const bool isMono = header.channelCount == 1;
  return header.isMPEG1 ? (isMono ? 17 : 32) : (isMono ? 9 : 17);
}

std::size_t checksumBytes(const MPEGFrameHeader& header) {
  return header.hasChecksum ? kChecksumBytes : 0;
}

}  // namespace

std::optional<MP3Packet> MP3Packet::at(std::span<const std::byte> bytes) noexcept {
  const auto header = readMPEGFrameHeader(bytes);
  if (!header || header->layer != 3 || header->byteCount > bytes.size()) return {};
  const MP3Packet packet{.header = *header, .bytes = bytes.first(header->byteCount)};
  return packet.overhead() <= header->byteCount ? std::optional(packet) : std::nullopt;
}

std::size_t MP3Packet::overhead() const noexcept {
  return kHeaderBytes + checksumBytes(header) + sideInformationBytes(header);
}

std::size_t MP3Packet::longestOverhead() const noexcept {
  return kHeaderBytes + kChecksumBytes + sideInformationBytes(header);
}

std::size_t MP3Packet::mainDataBytes() const noexcept {
  return bytes.size() - overhead();
}

std::uint32_t MP3Packet::streamMark() const noexcept {
  constexpr std::uint32_t kMask = 0xFFFE0CCF;
  std::uint32_t word = 0;
  for (const std::byte byte : bytes.first(kHeaderBytes))
    word = word << 8 | std::to_integer<std::uint32_t>(byte);
  return word & kMask;
}

MP3Packet emptied(const MP3Packet& packet, std::vector<std::byte>& memory) {
  memory.assign(packet.bytes.begin(), packet.bytes.end());
  // The first 9 or 8 bits tell where its main data begin, which the decoder goes by.
  std::size_t at = kHeaderBytes + checksumBytes(packet.header) + 1;
  if (packet.header.isMPEG1) memory[at++] &= std::byte{0x80};
  for (; at < packet.overhead(); ++at) memory[at] = {};
  return {.header = packet.header, .bytes = memory};
}

std::optional<MP3MainData> readMP3MainData(const MP3Packet& packet) noexcept {
  constexpr std::uint32_t kMostBigValues = 288;  // pairs of the 576 lines
  const MPEGFrameHeader& header = packet.header;
  const bool isMPEG1 = header.isMPEG1;
  const std::size_t channels = header.channelCount;
  Bits bits(packet.bytes.subspan(kHeaderBytes + checksumBytes(header)));
  MP3MainData data;
  data.back = bits.take(isMPEG1 ? 9 : 8);
  bits.pass(isMPEG1 ? (channels == 1 ? 5 : 3) + 4 * channels : channels);
  for (std::size_t granule = 0; granule < (isMPEG1 ? 2 : 1) * channels; ++granule) {
    data.bits += bits.take(12);
    const std::uint32_t bigValues = bits.take(9);
    bits.pass(8 + (isMPEG1 ? 4 : 9));  // gain, scale factors' lengths
    const bool isSwitched = bits.take(1) != 0;
    const std::uint32_t blockType = bits.take(2);
    bits.pass(20 + (isMPEG1 ? 3 : 2));
    if (bigValues > kMostBigValues || (isSwitched && blockType == 0)) return {};
  }
  return data;
}

}  // namespace orvane
