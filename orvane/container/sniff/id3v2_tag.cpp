#include "orvane/container/sniff/id3v2_tag.h"

#include <array>
#include <cstddef>

namespace orvane {
namespace {

constexpr int kMaximumTags = 8;
constexpr std::size_t kHeaderBytes = 10;

/// Bytes of the tag at `offset`, 0 when there is none. Its size has seven bits to the byte; version
/// 4 may repeat the header at the end.
std::uint64_t tagBytes(const InputFile& file, std::uint64_t offset) {
  constexpr std::array kSignature{std::byte{'I'}, std::byte{'D'}, std::byte{'3'}};
  constexpr std::byte kHasFooter{0x10};
  std::array<std::byte, kHeaderBytes> header{};
  if (file.readAt(offset, header) < header.size()) return 0;
  for (std::size_t i = 0; i < kSignature.size(); ++i)
    if (header[i] != kSignature[i]) return 0;
  std::uint64_t size = 0;
  for (std::size_t i = 6; i < kHeaderBytes; ++i) {
    const auto byte = std::to_integer<std::uint64_t>(header[i]);
    if (byte > 127) return 0;
    size = size << 7 | byte;
  }
  const bool hasFooter = (header[5] & kHasFooter) != std::byte{0};
  return kHeaderBytes + size + (hasFooter ? kHeaderBytes : 0);
}

}  // namespace

std::uint64_t endOfID3v2Tags(const InputFile& file) {
  std::uint64_t end = 0;
  for (int tags = 0; tags < kMaximumTags; ++tags) {
    const std::uint64_t size = tagBytes(file, end);
    if (size == 0) break;
    end += size;
  }
  return end;
}

}  // namespace orvane
