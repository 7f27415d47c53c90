#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>

#include "orvane/platform/channel_layout.h"

namespace orvane {

/// The labels that a layout tag stands for, in stored order.
struct TaggedLabels {
  static constexpr std::size_t kCapacity = 16;

  ChannelLayoutTag tag = 0;
  std::size_t count = 0;
  std::array<ChannelLabel, kCapacity> labels{};

  constexpr TaggedLabels(ChannelLayoutTag identifier, std::initializer_list<ChannelLabel> list)
      : tag(identifier << 16 | static_cast<ChannelLayoutTag>(list.size())), count(list.size()) {
    std::copy(list.begin(), list.end(), labels.begin());
  }

  constexpr std::span<const ChannelLabel> span() const { return {labels.data(), count}; }
};

namespace ChannelLayoutTagTable {

using enum ChannelLabel;
inline constexpr auto L = left, R = right, C = center, LFE = lfe, Ls = leftSurround,
                      Rs = rightSurround, Lc = leftCenter, Rc = rightCenter, Cs = centerSurround,
                      Lsd = leftSurroundDirect, Rsd = rightSurroundDirect, Ts = topCenterSurround,
                      Vhl = verticalHeightLeft, Vhc = verticalHeightCenter,
                      Vhr = verticalHeightRight, Tbl = topBackLeft, Tbr = topBackRight,
                      Rls = rearSurroundLeft, Rrs = rearSurroundRight, Lw = leftWide,
                      Rw = rightWide, Ltm = leftTopMiddle, Rtm = rightTopMiddle, Ltr = leftTopRear,
                      Rtr = rightTopRear;

/// By identifier. Of several tags with equal labels the first listed is the one that labels turn
/// into. The numbers are those of Core Audio's public list; left out are its ambisonic orders, the
/// cinema layouts beyond 16 channels and layouts whose positions it does not spell out.
inline constexpr TaggedLabels kTable[] = {
    {100, {C}},
    {101, {L, R}},
    {102, {headphonesLeft, headphonesRight}},
    {103, {leftTotal, rightTotal}},  // matrix-encoded stereo
    {104, {midSideMid, midSideSide}},
    {105, {xyX, xyY}},
    {106, {binauralLeft, binauralRight}},
    {107, {ambisonicW, ambisonicX, ambisonicY, ambisonicZ}},
    {108, {L, R, Ls, Rs}},                      // quadraphonic
    {109, {L, R, Ls, Rs, C}},                   // pentagonal
    {110, {L, R, Ls, Rs, C, Cs}},               // hexagonal
    {111, {L, R, Ls, Rs, C, Cs, Lw, Rw}},       // octagonal
    {112, {L, R, Ls, Rs, Vhl, Vhr, Tbl, Tbr}},  // cube
    {113, {L, R, C}},                           // MPEG 3.0 A, B
    {114, {C, L, R}},
    {115, {L, R, C, Cs}},  // MPEG 4.0 A, B
    {116, {C, L, R, Cs}},
    {117, {L, R, C, Ls, Rs}},  // MPEG 5.0 A … D
    {118, {L, R, Ls, Rs, C}},
    {119, {L, C, R, Ls, Rs}},
    {120, {C, L, R, Ls, Rs}},
    {121, {L, R, C, LFE, Ls, Rs}},  // MPEG 5.1 A … D
    {122, {L, R, Ls, Rs, C, LFE}},
    {123, {L, C, R, Ls, Rs, LFE}},
    {124, {C, L, R, Ls, Rs, LFE}},
    {125, {L, R, C, LFE, Ls, Rs, Cs}},      // MPEG 6.1 A
    {126, {L, R, C, LFE, Ls, Rs, Lc, Rc}},  // MPEG 7.1 A … C
    {127, {C, Lc, Rc, L, R, Ls, Rs, LFE}},
    {128, {L, R, C, LFE, Ls, Rs, Rls, Rrs}},
    {129, {L, R, Ls, Rs, C, LFE, Lc, Rc}},                 // Emagic 7.1
    {130, {L, R, C, LFE, Ls, Rs, leftTotal, rightTotal}},  // SMPTE DTV
    {131, {L, R, Cs}},                                     // ITU 2.1, 2.2
    {132, {L, R, Ls, Rs}},
    {133, {L, R, LFE}},  // DVD 4, 5, 6, 10, 11, 18
    {134, {L, R, LFE, Cs}},
    {135, {L, R, LFE, Ls, Rs}},
    {136, {L, R, C, LFE}},
    {137, {L, R, C, LFE, Cs}},
    {138, {L, R, Ls, Rs, LFE}},
    {139, {L, R, Ls, Rs, C, Cs}},  // audio unit 6.0, 7.0
    {140, {L, R, Ls, Rs, C, Rls, Rrs}},
    {141, {C, L, R, Ls, Rs, Cs}},  // AAC 6.0, 6.1, 7.0, octagonal
    {142, {C, L, R, Ls, Rs, Cs, LFE}},
    {143, {C, L, R, Ls, Rs, Rls, Rrs}},
    {144, {C, L, R, Ls, Rs, Rls, Rrs, Cs}},
    {148, {L, R, Ls, Rs, C, Lc, Rc}},  // audio unit 7.0 front
    {149, {C, LFE}},                   // AC-3
    {150, {L, C, R}},
    {151, {L, C, R, Cs}},
    {152, {L, C, R, LFE}},
    {153, {L, R, Cs, LFE}},
    {154, {L, C, R, Cs, LFE}},
    {155, {L, C, R, Ls, Rs, Cs}},  // E-AC-3
    {156, {L, C, R, Ls, Rs, Rls, Rrs}},
    {157, {L, C, R, Ls, Rs, LFE, Cs}},
    {158, {L, C, R, Ls, Rs, LFE, Ts}},
    {159, {L, C, R, Ls, Rs, LFE, Vhc}},
    {160, {L, C, R, Ls, Rs, LFE, Rls, Rrs}},
    {161, {L, C, R, Ls, Rs, LFE, Lc, Rc}},
    {162, {L, C, R, Ls, Rs, LFE, Lsd, Rsd}},
    {163, {L, C, R, Ls, Rs, LFE, Lw, Rw}},
    {164, {L, C, R, Ls, Rs, LFE, Vhl, Vhr}},
    {165, {L, C, R, Ls, Rs, LFE, Cs, Ts}},
    {166, {L, C, R, Ls, Rs, LFE, Cs, Vhc}},
    {167, {L, C, R, Ls, Rs, LFE, Ts, Vhc}},
    {183, {C, L, R, Ls, Rs, Rls, Rrs, LFE}},  // AAC 7.1 B, C
    {184, {C, L, R, Ls, Rs, LFE, Vhl, Vhr}},
    {185, {L, R, Rls, Rrs}},  // WAVE 4.0 B, 5.0 B, 5.1 B, 6.1, 7.1
    {186, {L, R, C, Rls, Rrs}},
    {187, {L, R, C, LFE, Rls, Rrs}},
    {188, {L, R, C, LFE, Cs, Ls, Rs}},
    {189, {L, R, C, LFE, Rls, Rrs, Ls, Rs}},
    {192, {L, R, C, LFE, Ls, Rs, Rls, Rrs, Vhl, Vhr, Ltr, Rtr}},  // 7.1.4, 9.1.6, 5.1.2
    {193, {L, R, C, LFE, Ls, Rs, Rls, Rrs, Lw, Rw, Vhl, Vhr, Ltm, Rtm, Ltr, Rtr}},
    {194, {L, R, C, LFE, Ls, Rs, Ltm, Rtm}},
    {195, {L, R, C, LFE, Ls, Rs, Vhl, Vhr, Ltr, Rtr}},  // 5.1.4, 7.1.2
    {196, {L, R, C, LFE, Ls, Rs, Rls, Rrs, Ltm, Rtm}},
};

}  // namespace ChannelLayoutTagTable
}  // namespace orvane
