#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "orvane/container/mp3/mp3_decoder.h"
#include "orvane/container/mp3/mp3_map.h"
#include "orvane/container/mp3/mp3_packet_reader.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// The audio of an MP3 as planar floats, priming and padding taken off, any number of frames at a
/// time.
class MP3Stream {
 public:
  /// At the start. Throws `PlatformError`, like everything here that reads.
  MP3Stream(std::shared_ptr<const InputFile> file, std::shared_ptr<const MP3Map> map);

  /// Goes on with that frame, one of those that the map can reach and not the first one; the frames
  /// before it are decoded, too, and kept to be compared.
  bool seek(std::int64_t frame);

  /// The next frames, as many as there is room for; fewer only at the end.
  std::size_t read(MutablePlanarView room);

  /// Whether libmpg123 has decoded all packets so far: it fills up with zeros what it finds
  /// damaged, and rounds otherwise from there on than a decoder that has not met the damage.
  bool isSound() const noexcept { return isSound_; }

  /// Whether `audio`, read last, ends bit for bit with what `next` has decoded before its own.
  static bool isFollowedBy(const MP3Stream& next, PlanarView audio, PlanarView nextAudio);

 private:
  void enter(std::int64_t packet, std::int64_t decodedFrame);
  std::size_t decodeNext(std::size_t mainDataBefore);
  std::size_t channelCount() const noexcept { return map_->head.format.channelCount; }

  std::shared_ptr<const InputFile> file_;
  std::shared_ptr<const MP3Map> map_;
  MP3PacketReader reader_;
  MP3Decoder decoder_{};
  std::span<const float> packet_{};  ///< the present one's audio, interleaved
  std::size_t offset_ = 0;           ///< in its frames
  std::int64_t position_ = 0;        ///< in the audio
  bool isSound_ = true;
  std::vector<std::byte> emptied_{};
  std::vector<float> leadIn_{};  ///< what came before the frame sought, channel by channel
};

}  // namespace orvane
