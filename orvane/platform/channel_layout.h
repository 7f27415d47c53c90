#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// Loudspeaker positions, numbered as Core Audio numbers them in CAF and AIFF layout chunks.
/// Values 1 … 18 are the WAVE mask's bits 0 … 17 plus one.
enum class ChannelLabel : std::uint32_t {
  unused = 0,
  left = 1,
  right = 2,
  center = 3,
  lfe = 4,
  leftSurround = 5,
  rightSurround = 6,
  leftCenter = 7,
  rightCenter = 8,
  centerSurround = 9,
  leftSurroundDirect = 10,
  rightSurroundDirect = 11,
  topCenterSurround = 12,
  verticalHeightLeft = 13,
  verticalHeightCenter = 14,
  verticalHeightRight = 15,
  topBackLeft = 16,
  topBackCenter = 17,
  topBackRight = 18,
  rearSurroundLeft = 33,
  rearSurroundRight = 34,
  leftWide = 35,
  rightWide = 36,
  lfe2 = 37,
  leftTotal = 38,
  rightTotal = 39,
  hearingImpaired = 40,
  narration = 41,
  mono = 42,
  dialogCentricMix = 43,
  centerSurroundDirect = 44,
  haptic = 45,
  leftTopMiddle = 49,
  rightTopMiddle = 51,
  leftTopRear = 52,
  centerTopRear = 53,
  rightTopRear = 54,
  useCoordinates = 100,
  ambisonicW = 200,
  ambisonicX = 201,
  ambisonicY = 202,
  ambisonicZ = 203,
  midSideMid = 204,
  midSideSide = 205,
  xyX = 206,
  xyY = 207,
  binauralLeft = 208,
  binauralRight = 209,
  headphonesLeft = 301,
  headphonesRight = 302,
  discrete = 400,
  discrete0 = 0x10000,  ///< discrete channel n is discrete0 + n
  unknown = 0xFFFFFFFF,
};

/// A layout tag: (identifier << 16) | channel count, as in CAF and AIFF layout chunks.
using ChannelLayoutTag = std::uint32_t;

namespace ChannelLayoutTags {
inline constexpr ChannelLayoutTag useChannelDescriptions = 0x00000000;
inline constexpr ChannelLayoutTag useChannelBitmap = 0x00010000;
inline constexpr ChannelLayoutTag mono = 0x00640001;
inline constexpr ChannelLayoutTag stereo = 0x00650002;
inline constexpr ChannelLayoutTag quadraphonic = 0x006C0004;
inline constexpr ChannelLayoutTag mpeg30A = 0x00710003;
inline constexpr ChannelLayoutTag mpeg50A = 0x00750005;
inline constexpr ChannelLayoutTag mpeg51A = 0x00790006;
inline constexpr ChannelLayoutTag mpeg61A = 0x007D0007;
inline constexpr ChannelLayoutTag mpeg71A = 0x007E0008;
inline constexpr ChannelLayoutTag mpeg71C = 0x00800008;
inline constexpr ChannelLayoutTag discreteInOrder = 0x00930000;  ///< | channel count
inline constexpr ChannelLayoutTag unknown = 0xFFFF0000;          ///< | channel count
}  // namespace ChannelLayoutTags

/// Which loudspeaker each channel of a buffer or file belongs to, in stored order.
struct ORVANE_API ChannelLayout {
  ChannelLayoutTag tag = ChannelLayoutTags::useChannelDescriptions;
  std::vector<ChannelLabel> labels{};  ///< one per channel

  bool operator==(const ChannelLayout&) const = default;

  /// The layout of a tag. Discrete tags give `discrete0 + n`; absent for a tag this table does not
  /// know, for the two special tags and for "unknown".
  static std::optional<ChannelLayout> fromTag(ChannelLayoutTag tag);

  /// A layout of the given labels; its tag is the one that lists exactly these, else
  /// `useChannelDescriptions`.
  static ChannelLayout fromLabels(std::vector<ChannelLabel> labels);

  /// The layout of a WAVE_FORMAT_EXTENSIBLE mask: channels take the set bits in ascending order,
  /// channels beyond the last set bit are unknown, excess bits are ignored. With both the back pair
  /// (BL, BR) and the side pair (SL, SR) present the back pair is Rls/Rrs and the side pair Ls/Rs;
  /// a lone pair of either kind is Ls/Rs. Half a pair counts as the pair. Absent when the mask is 0
  /// or names no position.
  static std::optional<ChannelLayout> fromWaveMask(std::uint32_t mask, std::uint32_t channelCount);

  /// The inverse of `fromWaveMask`: the mask whose ascending bits are these labels, in this order.
  /// Ls/Rs become the side pair beside Rls/Rrs and the back pair alone; Lsd/Rsd are the side pair,
  /// mono is the centre; unknown channels at the end have no bit. Absent when other labels have no
  /// bits or are not in ascending bit order.
  std::optional<std::uint32_t> waveMask() const;

  /// How these channels stand in a WAVE file, which knows no order but that of the mask's bits.
  struct WaveOrder {
    std::uint32_t mask = 0;
    /// The layout's channel that each channel of the file is.
    std::vector<std::uint32_t> channels{};

    bool operator==(const WaveOrder&) const = default;
  };

  /// As `waveMask`, for labels in any order. Absent when labels have no bits or share one.
  std::optional<WaveOrder> waveOrder() const;

  /// The layout of a Core Audio channel bitmap: bits 0 … 17 are labels 1 … 18, without a pair rule;
  /// bits 21 and 23 … 26 are the top-middle and top-rear positions. Channels beyond the last bit
  /// are unknown, excess bits are ignored; absent when no bit names a position.
  static std::optional<ChannelLayout> fromBitmap(std::uint32_t bitmap, std::uint32_t channelCount);
};

/// Short name as printed in tables: "L", "R", "C", "LFE", "Ls", "Rls" …; discrete channels count
/// from "D1" (`discrete0`). Empty when unknown.
ORVANE_API std::string shortName(ChannelLabel label);

}  // namespace orvane
