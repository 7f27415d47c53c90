#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "orvane/container/ffmpeg/codec_context.h"
#include "orvane/container/ffmpeg/demuxer.h"
#include "orvane/container/ffmpeg/segmented_decoding.h"

namespace orvane {

/// Decodes the demuxer's stream from its start to its end, with priming and padding trimmed as the
/// container says. Packets that cannot be decoded are left out.
class Decoder {
 public:
  /// `demuxer` must live as long and be read by nobody else. Throws `PlatformError`.
  Decoder(Demuxer& demuxer, std::size_t threadCount);

  /// The next frame that holds audio, valid until the next call; null at the end. Throws
  /// `PlatformError` when it has another rate or channel count than the first.
  const AVFrame* next();

  /// Of the current link of a chained file; to be used before the next frame is asked for.
  const AVCodecContext& codec() const noexcept { return *codec_; }
  /// Whether packets before the last one were left out because they could not be decoded.
  bool hasMetDamage() const noexcept { return hasMetDamage_; }
  /// Whether the last packet so far could not be decoded: at the end of a file often a scrap.
  bool hasJustFailed() const noexcept { return hasJustFailed_; }
  /// Whether the stream has any packet at all, as far as it was read.
  bool hasMetPackets() const noexcept { return hasMetPackets_; }

 private:
  AVFrame* receive();
  void send();
  bool endsLink();
  void checkFormat(const AVFrame& frame);

  Demuxer& demuxer_;
  CodecContextPointer codec_;
  PacketPointer packet_;
  FramePointer frame_;
  std::unique_ptr<SegmentedDecoding> segments_;  ///< null where only serial decoding is exact
  bool isChainable_;  ///< Opus in Ogg, whose decoder must be told of another link
  int sampleRate_ = 0;
  int channelCount_ = 0;
  std::int64_t framesLeft_ = INT64_MAX;  ///< of those that the container gives the audio
  bool isDraining_ = false;
  bool isBetweenLinks_ = false;   ///< drained before the next link of a chained Opus file
  bool isPacketWaiting_ = false;  ///< the next link's first one
  bool hasJustFailed_ = false;
  bool hasMetDamage_ = false;
  bool hasMetPackets_ = false;
};

}  // namespace orvane
