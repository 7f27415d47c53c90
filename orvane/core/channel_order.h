#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/audio_format.h"
#include "orvane/platform/channel_layout.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

/// The one order in which all parts of the engine hold channels, and the loudness weights that
/// follow from where channels stand.
///
/// Canonical order: L R C LFE Ls Rs Rls Rrs Lc Rc Cs, direct surrounds (Lsd Rsd Csd), wides (Lw
/// Rw), heights in the order of their labels, a second LFE, then channels without a position as
/// they come. A channel labelled mono counts as C.
namespace orvane::core::ChannelOrder {

/// Reorders the buffer's channels, by their labels, into canonical order, without moving samples,
/// and returns it with its layout changed accordingly. A buffer without a layout, or with one that
/// does not list exactly its channels, is returned unchanged: positions are never guessed. Frames
/// and channel count stay as they are. Null gives null.
ORVANE_API std::shared_ptr<PCMBuffer> canonicalize(std::shared_ptr<PCMBuffer> buffer);

/// One BS.1770 weight per channel of the buffer, from its layout; absent without a layout, or with
/// one that does not list exactly the buffer's channels. ITU-R BS.1770-5, Annex 3, Table 4:
/// positions between 60° and 120° to the side (wides, sides, surrounds) weigh 1.41, LFE 0,
/// everything else 1. A rear pair (Rls, Rrs) stands at 135° and weighs 1, unless it is the only
/// surround pair: then it is taken for Ls and Rs.
ORVANE_API std::optional<std::vector<float>> bs1770Weights(const PCMBuffer& buffer);
/// The same for audio of that format.
ORVANE_API std::optional<std::vector<float>> bs1770Weights(const AudioFormat& format);

/// Weights for audio of which only the channel count is known: 1 for one to three channels, then
/// 4 = L R Ls Rs, 5 = L R C Ls Rs, 6 = L R C LFE Ls Rs, 7 = 6 and Cs, 8 = 6 and Rls Rrs; from nine
/// on 1 each.
ORVANE_API std::vector<float> defaultWeights(std::uint32_t channelCount);

/// One label per channel of a layout, in its order; those of the tag when the record lists none.
/// Empty when the tag says nothing either.
ORVANE_API std::vector<ChannelLabel> channelLabels(const ChannelLayout& layout);

/// For each of `channelCount` channels with these labels, its index in canonical order. Absent when
/// the labels do not list exactly that many channels.
ORVANE_API std::optional<std::vector<std::uint32_t>> permutationToCanonical(
    const std::vector<ChannelLabel>& sourceLabels, std::uint32_t channelCount);

/// One short name per channel of a layout, in its order: "L", "R", "LFE" …; "Ch 3" for the third
/// channel when it has no name of its own.
ORVANE_API std::vector<std::string> displayShortNames(const ChannelLayout& layout);

/// The loudspeaker with that short name; absent when none has it.
ORVANE_API std::optional<ChannelLabel> loudspeakerNamed(std::string_view shortName);

}  // namespace orvane::core::ChannelOrder
