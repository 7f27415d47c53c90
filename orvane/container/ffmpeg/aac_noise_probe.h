#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "orvane/container/ffmpeg/codec_context.h"
#include "orvane/container/ffmpeg/demuxer.h"
#include "orvane/container/ffmpeg/frame_run.h"

namespace orvane {

/// Tells whether decoders of an AAC stream have drawn random numbers.
///
/// They stand for the coefficients of bands that are coded as noise (ISO/IEC 14496-3, 4.6.13). A
/// decoder's generator runs on for as long as it lives, so that its whole past is in them. It shows
/// in what a made-up packet with such a band decodes to: the second time that the packet is given,
/// when the overlap is its own, nothing else does.
class AACNoiseProbe {
 public:
  /// For the stream of which that is a packet, in so many channels. Null where the answer would not
  /// hold: for other profiles than LC, whose decoders remember more than that and one packet, more
  /// than two channels, and decoders whose random numbers do not show. Throws `PlatformError`.
  static std::unique_ptr<AACNoiseProbe> of(const Demuxer& demuxer,
                                           const AVCodecParameters& parameters,
                                           const AVPacket& packet, int channelCount);

  /// Whether a packet has the same fixed header as that of which the probe was made.
  bool suits(const AVPacket& packet) const;

  /// Whether the decoder has drawn no random numbers but those of so many earlier probings, below
  /// `kMostProbings`. Afterwards it must be flushed, and what noise it meets is not the stream's.
  bool findsNoNoise(AVCodecContext& codec, std::size_t earlierProbings) const;

  static constexpr std::size_t kMostProbings = 16;

 private:
  explicit AACNoiseProbe(PacketPointer packet) : packet_(std::move(packet)) {}
  FrameRun answerOf(AVCodecContext& codec) const;

  PacketPointer packet_;
  std::vector<FrameRun> answers_{};  ///< of a decoder that has decoded nothing else
};

}  // namespace orvane
