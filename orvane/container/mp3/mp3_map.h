#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orvane/container/mp3/mp3_encoder_tag.h"
#include "orvane/container/mp3/mp3_packet.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/progress.h"

namespace orvane {

/// How an MP3 begins.
struct MP3Head {
  MPEGFrameHeader format{};  ///< of the first packet of audio
  std::uint32_t framesPerPacket = 0;
  std::size_t overheadPerPacket = 0;  ///< at most
  std::uint32_t streamMark = 0;       ///< of every packet of audio
  std::uint64_t start = 0;            ///< place of the first one in the file
  std::optional<MP3EncoderTag> tag{};
};

/// Absent where behind ID3v2 tags and at most one encoder's tag not some sound packets of one
/// stream follow one another, the first of which needs nothing of an earlier one. Throws
/// `PlatformError`.
std::optional<MP3Head> readMP3Head(const std::shared_ptr<const InputFile>& file);

/// An MP3 that is sound as far as can be told without decoding it, and where its packets lie.
struct MP3Map {
  /// A decoder whose first packet has a number divisible by this one rounds as one that has begun
  /// with the first of all: where the ring of 16 places that the filter bank of libmpg123 turns
  /// moves on by 18 a packet, as in MPEG-2, it takes so many to come around; elsewhere fewer do.
  static constexpr std::int64_t kEntryStep = 8;

  MP3Head head{};
  std::uint64_t end = 0;  ///< of the last packet, in the file
  std::int64_t packetCount = 0;
  std::int64_t skippedFrames = 0;  ///< decoded before the audio
  std::int64_t frameCount = 0;     ///< of audio
  /// Places of every `kEntryStep`th packet, but for those after some days of audio.
  std::vector<std::uint64_t> entries{};

  /// Number of the latest packet that has an entry where a decoder may begin that is to give, from
  /// the packet `first` on, what one gives that has begun with the first of all.
  std::int64_t entryBefore(std::int64_t first) const noexcept;

  /// The frames of audio that decoders which begin in mid-file can come to.
  std::int64_t reachableFrames() const noexcept;
};

/// Reads the file's frame headers to its end. Absent where packets of one stream do not follow one
/// another without a gap up to the tags at the end, where a packet's side information is damaged,
/// where there are more or fewer packets than an encoder's tag states, or hardly any. Throws
/// `PlatformError`, and `Cancelled` where the observer, which may be null, wants no more.
std::optional<MP3Map> mapMP3(const std::shared_ptr<const InputFile>& file,
                             ProgressObserver* observer);

}  // namespace orvane
