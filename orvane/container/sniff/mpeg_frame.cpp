#include "orvane/container/sniff/mpeg_frame.h"

#include <array>

namespace orvane {
namespace {

/// Bit rates of the versions and layers.
constexpr std::array<std::array<std::uint32_t, 15>, 5> kKilobits = {{
    {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},  // MPEG-1 I
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},     // MPEG-1 II
    {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},      // MPEG-1 III
    {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},     // MPEG-2 I
    {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},          // MPEG-2 II, III
}};

/// Sampling rates of MPEG-1; the others have halves and quarters of them.
constexpr std::array<std::uint32_t, 3> kHertz = {44100, 48000, 32000};

}  // namespace

std::optional<MPEGFrameHeader> readMPEGFrameHeader(std::span<const std::byte> bytes) noexcept {
  const auto at = [&](std::size_t i) { return std::to_integer<std::uint32_t>(bytes[i]); };
  if (bytes.size() < 4 || at(0) != 0xFF || (at(1) & 0xE0) != 0xE0) return {};
  const std::uint32_t version = (at(1) >> 3) & 3;  // 3 = MPEG-1, 2 = MPEG-2, 0 = MPEG-2.5
  const std::uint32_t layer = 4 - ((at(1) >> 1) & 3);
  const std::uint32_t rateIndex = at(2) >> 4;
  const std::uint32_t frequency = (at(2) >> 2) & 3;
  if (version == 1 || layer == 4 || rateIndex == 0 || rateIndex == 15 || frequency == 3) return {};
  const bool isMPEG1 = version == 3;
  const std::uint32_t bits =
      1000 * kKilobits[isMPEG1 ? layer - 1 : (layer == 1 ? 3U : 4U)][rateIndex];
  const std::uint32_t hertz = kHertz[frequency] >> (isMPEG1 ? 0 : (version == 2 ? 1 : 2));
  const std::uint32_t padding = (at(2) >> 1) & 1;
  const std::uint32_t byteCount =
      layer == 1 ? (12 * bits / hertz + padding) * 4
                 : (layer == 3 && !isMPEG1 ? 72 : 144) * bits / hertz + padding;
  constexpr std::uint32_t kSingleChannel = 3;
  return MPEGFrameHeader{.isMPEG1 = isMPEG1,
                         .layer = layer,
                         .sampleRate = hertz,
                         .channelCount = at(3) >> 6 == kSingleChannel ? 1U : 2U,
                         .hasChecksum = (at(1) & 1) == 0,
                         .byteCount = byteCount};
}

}  // namespace orvane
