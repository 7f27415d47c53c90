#include "orvane/container/sniff/iso_media.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace orvane {
namespace {

using Bytes = std::span<const std::byte>;

std::uint32_t bigEndian32(Bytes bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i)
    value = value << 8 | std::to_integer<std::uint32_t>(bytes[at + i]);
  return value;
}

/// The code of a brand that names one kind of file; absent for generic ones (`isom`, `mp42` …).
std::optional<FourCC> codeOfBrand(FourCC brand) {
  const FourCC family = brand >> 8;
  const auto isFamily = [&](std::string_view text) { return family == fourCCFrom(text) >> 8; };
  if (isFamily("M4A") || isFamily("M4P") || isFamily("F4A")) return fourCCFrom("m4af");
  if (isFamily("M4B") || isFamily("F4B")) return fourCCFrom("m4bf");
  if (isFamily("M4V") || isFamily("F4V") || isFamily("F4P")) return fourCCFrom("mp4f");
  if (isFamily("3g2") || brand == fourCCFrom("kddi")) return fourCCFrom("3gp2");
  if (isFamily("3gp") || isFamily("3gr") || isFamily("3gs") || isFamily("3ge") || isFamily("3gg") ||
      isFamily("3gh"))
    return fourCCFrom("3gpp");
  if (brand == fourCCFrom("qt  ")) return fourCCFrom("MOV ");
  return {};
}

}  // namespace

std::optional<FourCC> sniffISOMedia(Bytes head) {
  if (head.size() < 12) return {};
  const FourCC type = bigEndian32(head, 4);
  if (type == fourCCFrom("ftyp")) {
    if (const auto code = codeOfBrand(bigEndian32(head, 8))) return code;
    // A generic major brand: a compatible one may say more.
    const std::size_t end = std::min<std::size_t>(bigEndian32(head, 0), head.size());
    for (std::size_t at = 16; at + 4 <= end; at += 4) {
      const auto code = codeOfBrand(bigEndian32(head, at));
      if (code == fourCCFrom("m4af") || code == fourCCFrom("m4bf")) return code;
    }
    return fourCCFrom("mp4f");
  }
  for (const std::string_view atom : {"moov", "mdat", "wide", "free", "skip", "pnot"})
    if (type == fourCCFrom(atom)) return fourCCFrom("MOV ");
  return {};
}

}  // namespace orvane
