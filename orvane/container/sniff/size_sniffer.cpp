#include "orvane/container/sniff/size_sniffer.h"

#include <algorithm>
#include <bit>

namespace orvane {
namespace {

using Bytes = std::span<const std::byte>;

constexpr std::size_t kHTKHeader = 12;
constexpr std::size_t kMPCHeader = 42;
constexpr std::size_t kDVMSHeader = 120;
constexpr std::size_t kRSOHeader = 8;

/// `count` bytes at `at`, which are there.
std::uint64_t number(Bytes bytes, std::size_t at, std::size_t count, std::endian order) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < count; ++i)
    value = value << 8 | std::to_integer<std::uint64_t>(
                             bytes[at + (order == std::endian::big ? i : count - 1 - i)]);
  return value;
}

/// Samples of two bytes and of the kind "waveform", at a period of 0.1 µs to 0.01 s.
bool isHTK(Bytes head, std::uint64_t size) {
  if (head.size() < kHTKHeader) return false;
  const auto field = [&](std::size_t at, std::size_t count) {
    return number(head, at, count, std::endian::big);
  };
  const std::uint64_t samples = field(0, 4);
  const std::uint64_t period = field(4, 4);
  return samples > 0 && size == kHTKHeader + 2 * samples && period > 0 && period <= 100'000 &&
         field(8, 2) == 2 && field(10, 2) == 0;
}

/// A printable name behind the two first bytes, one or two channels, frames that fill the file.
bool isMPC2000(Bytes head, std::uint64_t size) {
  if (head.size() < kMPCHeader || head[0] != std::byte{1} || head[1] != std::byte{4}) return false;
  const bool hasName = std::ranges::all_of(head.subspan(2, 17), [](std::byte b) {
    return b == std::byte{0} || (b >= std::byte{32} && b < std::byte{127});
  });
  const std::uint64_t stereo = number(head, 21, 1, std::endian::little);
  const std::uint64_t frames = number(head, 30, 4, std::endian::little);
  return hasName && stereo <= 1 && frames > 0 && size == kMPCHeader + frames * 2 * (stereo + 1);
}

/// The last two bytes of the header are the sum of all the others.
bool isDVMS(Bytes head, std::uint64_t size) {
  if (head.size() < kDVMSHeader) return false;
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < kDVMSHeader - 2; ++i) sum += std::to_integer<std::uint64_t>(head[i]);
  const std::uint64_t length = number(head, 26, 4, std::endian::little);
  return length > 0 && size == kDVMSHeader + length &&
         number(head, 118, 2, std::endian::little) == (sum & 0xFFFF);
}

/// Sound of plain samples, not looped.
bool isRSO(Bytes head, std::uint64_t size) {
  if (head.size() < kRSOHeader) return false;
  const auto field = [&](std::size_t at) { return number(head, at, 2, std::endian::big); };
  return field(0) == 0x0100 && field(2) > 0 && size == kRSOHeader + field(2) && field(4) > 0 &&
         field(6) == 0;
}

}  // namespace

std::optional<FourCC> sniffBySize(std::span<const std::byte> head, std::uint64_t size) {
  if (isHTK(head, size)) return fourCCFrom("HTK ");
  if (isMPC2000(head, size)) return fourCCFrom("MPC2");
  if (isDVMS(head, size)) return fourCCFrom("DVMS");
  if (isRSO(head, size)) return fourCCFrom("RSO ");
  return {};
}

}  // namespace orvane
