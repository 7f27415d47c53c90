#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "orvane/container/ffmpeg/aac_noise_probe.h"
#include "orvane/container/ffmpeg/codec_context.h"
#include "orvane/container/ffmpeg/demuxer.h"
#include "orvane/container/ffmpeg/entry_rule.h"
#include "orvane/container/ffmpeg/frame_run.h"
#include "orvane/container/ffmpeg/packet_history.h"

namespace orvane {

/// Decodes stretches of a stream by several decoders at once, each in a segment of its own.
///
/// All but the first begin some packets early. A segment counts only when what its decoder makes of
/// the last packets before it is, bit for bit, what its neighbour made of them: then the decoder
/// has the state that decoding from the start would have brought it to. Otherwise the neighbour
/// goes on, and the rest of the stream is decoded serially. So what comes out is always what one
/// decoder gives. Comparing tells nothing of what a decoder remembers without its being heard; so
/// stretches hold only packets that are known to be forgotten (`EntryRule::suits`): no priming,
/// padding, new headers or links of a chained file, behind which everything is decoded serially.
///
/// A decoder of AAC also remembers how many random numbers it has drawn, which a neighbour does not
/// see. So behind its segment each is probed for having drawn none, and only then the segment
/// counts. As probing draws some, who goes on is a new decoder, which begins early as well.
class SegmentedDecoding {
 public:
  /// Null for a single thread, and where a decoder cannot be entered in mid-stream.
  static std::unique_ptr<SegmentedDecoding> of(Demuxer& demuxer, std::size_t threadCount);

  /// To be told of every packet that is decoded by itself, and of every frame that comes of it.
  void note(const AVPacket& packet);
  void note(const AVFrame& frame);

  /// To be called when `codec` is to be given the demuxer's next packet. False when it is to get
  /// it. Otherwise `nextFrame` has what the next packets decode to, they are gone from the demuxer,
  /// and `codec` is as if it had decoded them: no more, as far as the frames noted tell, than
  /// `framesLeft` frames.
  bool decodeStretch(CodecContextPointer& codec, std::int64_t framesLeft);

  /// The stretch's next frame, longer than a decoder's, valid until the next stretch is decoded;
  /// null when there is none.
  AVFrame* nextFrame() noexcept;

  /// Whether the last packet of the stretch could not be decoded.
  bool hasFailed() const noexcept { return hasFailed_; }

 private:
  struct Segment {
    CodecContextPointer ownCodec{};  ///< of all but the first
    AVCodecContext* codec = nullptr;
    std::vector<const AVPacket*> packets{};  ///< the demuxer's; those of the lead-in first
    std::size_t leadInPackets = 0;           ///< the history, of the first segment's decoder
    FrameRun compared{};                     ///< of the lead-in's last packets
    FrameRun frames{};
    std::size_t decodedPackets = 0;    ///< without those of the lead-in, the failing one included
    std::size_t framesBeforeLast = 0;  ///< of the audio: without the packets that are compared
    bool hasFailed = false;
    bool isCutShort = false;   ///< it has decoded to more than any segment may
    bool hasNoise = false;     ///< of AAC
    std::size_t probings = 0;  ///< that the decoder has had
  };

  SegmentedDecoding(Demuxer& demuxer, EntryRule rule, std::size_t threadCount);

  bool mayBegin(const AVCodecContext& codec);
  void giveUp() noexcept;
  bool isPlain(const AVPacket& packet) const;
  void findPlainPackets(std::size_t most);
  void readAhead(std::size_t most);
  std::size_t cut();
  void lay(std::size_t index, std::size_t leadIn, std::size_t start, std::size_t end);
  void decode(Segment& segment) const;
  bool goesOn(std::size_t index) const;
  void join(std::size_t count, CodecContextPointer& codec);

  Demuxer& demuxer_;
  CodecParametersPointer parameters_;  ///< that the stream begins with
  EntryRule rule_;
  std::size_t threadCount_;
  PacketHistory history_{};                 ///< of AAC: of the decoder that is no segment's own
  std::unique_ptr<AACNoiseProbe> probe_{};  ///< of AAC, once a stretch has been looked for
  std::vector<const AVPacket*> plain_{};    ///< the next packets, which one stretch may hold
  std::size_t mostSegmentBytes_ = 0;        ///< decoded
  std::vector<Segment> segments_{};
  std::vector<AVFrame*> frames_{};  ///< of those segments that count
  std::size_t givenFrames_ = 0;     ///< of `frames_`
  std::int64_t notedFrames_ = 0;
  std::size_t longestFrame_ = 0;   ///< in frames of the audio
  std::size_t largestFrame_ = 0;   ///< in bytes
  std::size_t packetsToPass_ = 0;  ///< before the next stretch is looked for
  bool isGivenUp_ = false;
  bool hasFailed_ = false;
};

}  // namespace orvane
