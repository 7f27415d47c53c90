#pragma once

#include <cstdint>
#include <optional>

#include "orvane/platform/channel_layout.h"
#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// What a track of an MP4, 3GP or QuickTime file says of its audio, apart from the packets
/// (ISO/IEC 14496-12; QuickTime File Format).
struct ISOTrack {
  /// That of the channel layout box; without one mono, stereo, or absent for more channels.
  std::optional<ChannelLayout> layout{};
  /// How much of the track is to be heard, in seconds ÷ `timescale`: what the edit list takes of
  /// the media. Absent without an edit list or when its media have no length of their own.
  std::optional<std::int64_t> duration{};
  std::uint32_t timescale = 0;

  bool operator==(const ISOTrack&) const = default;
};

/// The track that is numbered `trackID` in its header and has `channelCount` channels; absent when
/// there is none that can be made sense of.
ORVANE_API std::optional<ISOTrack> readISOTrack(const InputFile& file, std::uint32_t trackID,
                                                std::uint32_t channelCount);

}  // namespace orvane
