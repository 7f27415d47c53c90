#include "orvane/container/ffmpeg/segmented_decoding.h"

#include <algorithm>
#include <array>
#include <span>
#include <utility>

extern "C" {
#include <libavutil/samplefmt.h>
}

#include "orvane/platform/parallel.h"

namespace orvane {
namespace {

// Decoders whose memory ends. Layer III reaches back 511 bytes of main data and one synthesis
// window; that of layers I and II, which rounds to 16 bits, hands its rounding errors on for ever.
// Vorbis overlaps two blocks. Opus in its CELT mode predicts energies from packet to packet; the
// last trace of a difference is gone after about a second of music, and silence ends it at once.
// AAC overlaps two blocks, and where it holds no noise that is all; the decoder may be told to
// leave out some blocks at its start. The lossless codecs begin anew with every packet.
constexpr std::array kEntryRules{
    EntryRule{AV_CODEC_ID_MP3, 4, 2048, 3}, EntryRule{AV_CODEC_ID_VORBIS, 2, 0, 4},
    EntryRule{AV_CODEC_ID_OPUS, 50, 0, 5},  EntryRule{AV_CODEC_ID_ALAC, 1, 0, 1},
    EntryRule{AV_CODEC_ID_FLAC, 1, 0, 1},   EntryRule{AV_CODEC_ID_WAVPACK, 1, 0, 1},
    EntryRule{AV_CODEC_ID_TTA, 1, 0, 1},    EntryRule{AV_CODEC_ID_TAK, 1, 0, 1},
    EntryRule{AV_CODEC_ID_AAC, 3, 0, 1},
};

constexpr std::size_t kMostThreads = 16;
/// Serial decoding before the first stretch: priming lies behind by then, and short files end.
constexpr std::int64_t kFramesToBegin = std::int64_t{1} << 17;
/// Of a segment: what it decodes to and what it is decoded from.
constexpr std::size_t kMostDecodedBytes = std::size_t{8} << 20;
constexpr std::size_t kMostPackets = 4096;
constexpr std::size_t kMostCodedBytes = std::size_t{8} << 20;
/// A segment is worth its lead-in when it is so many times as long.
constexpr std::size_t kLeadInsPerSegment = 4;
/// Where lead-ins cost next to nothing, several shorter segments for each thread end together even
/// though others, like those that measure, take their time from the same processors.
constexpr std::size_t kLeadInsPerShortSegment = 32;
constexpr std::size_t kMostSegmentsPerThread = 4;

std::size_t bytesOf(const AVFrame& frame) {
  const int bytes = av_get_bytes_per_sample(static_cast<AVSampleFormat>(frame.format));
  return static_cast<std::size_t>(frame.nb_samples) * static_cast<std::size_t>(bytes) *
         static_cast<std::size_t>(frame.ch_layout.nb_channels);
}

}  // namespace

SegmentedDecoding::SegmentedDecoding(Demuxer& demuxer, const EntryRule& rule,
                                     std::size_t threadCount)
    : demuxer_(demuxer), rule_(rule), threadCount_(std::min(threadCount, kMostThreads)) {}

std::unique_ptr<SegmentedDecoding> SegmentedDecoding::of(Demuxer& demuxer,
                                                         std::size_t threadCount) {
  const AVCodecID codec = demuxer.stream().codecpar->codec_id;
  const auto rule = std::find_if(kEntryRules.begin(), kEntryRules.end(),
                                 [&](const EntryRule& each) { return each.codec == codec; });
  if (rule == kEntryRules.end() || threadCount < 2) return nullptr;
  return std::unique_ptr<SegmentedDecoding>(new SegmentedDecoding(demuxer, *rule, threadCount));
}

void SegmentedDecoding::note(const AVPacket& packet) {
  if (rule_.codec != AV_CODEC_ID_AAC || isGivenUp_) return;
  history_.add(packet);
  if (history_.size() > kMostPackets || history_.bytes() > kMostCodedBytes) giveUp();
}

void SegmentedDecoding::note(const AVFrame& frame) {
  notedFrames_ += frame.nb_samples;
  longestFrame_ = std::max(longestFrame_, static_cast<std::size_t>(frame.nb_samples));
  largestFrame_ = std::max(largestFrame_, bytesOf(frame));
}

bool SegmentedDecoding::decodeStretch(CodecContextPointer& codec, std::int64_t framesLeft) {
  if (isGivenUp_ || notedFrames_ < kFramesToBegin) return false;
  if (packetsToPass_ > 0) {
    --packetsToPass_;
    return false;
  }
  if (!mayBegin(*codec)) {
    giveUp();
    return false;
  }
  const std::size_t perSegment = std::min(kMostDecodedBytes / largestFrame_, kMostPackets);
  const auto bounded = static_cast<std::size_t>(framesLeft) / longestFrame_;
  const std::size_t most = std::min(threadCount_ * perSegment, bounded);
  const std::size_t packets = countPlainPackets(most);
  const std::size_t count = cut(packets);
  if (count < 2) {
    packetsToPass_ = packets;
    return false;
  }
  segments_.front().codec = codec.get();
  // Who comes first to the end reads what the next stretch is made of.
  parallelFor(threadCount_, count + 1, [&](std::size_t i) {
    if (i < count)
      decode(segments_[i]);
    else
      readAhead(packets, std::min(most, bounded - packets));
  });
  join(count, codec);
  return true;
}

AVFrame* SegmentedDecoding::nextFrame() noexcept {
  return givenFrames_ < frames_.size() ? frames_[givenFrames_++] : nullptr;
}

/// Whether the decoder's memory ends, as far as it can be told. Files with noise mostly have some
/// at once, and then no stretch is decoded in vain.
bool SegmentedDecoding::mayBegin(const AVCodecContext& codec) {
  if (rule_.codec != AV_CODEC_ID_AAC || probe_) return true;
  const auto packets = history_.packets();
  probe_ = AACNoiseProbe::of(demuxer_, *packets.back(), codec.ch_layout.nb_channels);
  return probe_ && probe_->findsNoNoise(*replay(demuxer_, packets), 0);
}

void SegmentedDecoding::giveUp() noexcept {
  isGivenUp_ = true;
  history_.clear();
}

bool SegmentedDecoding::isPlain(const AVPacket& packet) const {
  const auto concernsDecoder = [](const AVPacketSideData& side) {
    return side.type != AV_PKT_DATA_MPEGTS_STREAM_ID;
  };
  if (packet.size <= 0 || (packet.flags & (AV_PKT_FLAG_CORRUPT | AV_PKT_FLAG_DISCARD)) != 0 ||
      std::any_of(packet.side_data, packet.side_data + packet.side_data_elems, concernsDecoder))
    return false;
  if (probe_ && !probe_->suits(packet)) return false;
  // The speech modes' filters never quite forget; in RFC 6716, 3.1, their configurations come
  // first. Headers, which begin with a letter, look like one of them.
  constexpr int kFirstCELT = 16;
  return rule_.codec != AV_CODEC_ID_OPUS || packet.data[0] >> 3 >= kFirstCELT;
}

/// Of the packets to come, those that one stretch may hold.
std::size_t SegmentedDecoding::countPlainPackets(std::size_t most) {
  std::size_t count = 0;
  std::size_t bytes = 0;
  while (count < most && bytes < threadCount_ * kMostCodedBytes) {
    const AVPacket* packet = demuxer_.peek(count);
    if (packet == nullptr || !isPlain(*packet)) break;
    bytes += static_cast<std::size_t>(packet->size);
    ++count;
  }
  return count;
}

/// Has the demuxer read as much as one stretch may hold, behind that packet.
void SegmentedDecoding::readAhead(std::size_t first, std::size_t most) {
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < most && bytes < threadCount_ * kMostCodedBytes; ++i) {
    const AVPacket* packet = demuxer_.peek(first + i);
    if (packet == nullptr) break;
    bytes += static_cast<std::size_t>(packet->size);
  }
}

/// How many packets before `border` a decoder has to begin.
std::size_t SegmentedDecoding::leadIn(std::size_t border) {
  std::size_t packets = std::min(border, rule_.comparedPackets + rule_.warmUpPackets);
  std::size_t bytes = 0;
  for (std::size_t i = rule_.comparedPackets; i < packets; ++i)
    bytes += static_cast<std::size_t>(demuxer_.peek(border - 1 - i)->size);
  for (; packets < border && bytes < rule_.warmUpBytes; ++packets)
    bytes += static_cast<std::size_t>(demuxer_.peek(border - 1 - packets)->size);
  return packets;
}

/// Shares the next packets out among so many segments, each decoder getting as much to do; below 2
/// when there are too few packets.
std::size_t SegmentedDecoding::cut(std::size_t packets) {
  const std::size_t extra = leadIn(packets / 2);
  const std::size_t count =
      std::min(std::clamp(packets / (kLeadInsPerShortSegment * extra + 1), threadCount_,
                          kMostSegmentsPerThread * threadCount_),
               packets / (kLeadInsPerSegment * extra + 1));
  if (count < 2) return count;
  const std::size_t share = (packets + (count - 1) * extra) / count;
  for (std::size_t i = 0, start = 0; i < count; ++i) {
    const std::size_t end = i + 1 < count ? share + i * (share - extra) : packets;
    lay(i, start, end);
    start = end;
  }
  if (!probe_) return count;
  // Nothing but a lead-in, for a new decoder, whose random numbers are those of the stream.
  if (count < segments_.size()) segments_[count].ownCodec.reset();
  lay(count, packets, packets);
  return count + 1;
}

/// Makes that segment one of the packets from `start` up to `end`.
void SegmentedDecoding::lay(std::size_t index, std::size_t start, std::size_t end) {
  if (segments_.size() <= index) segments_.resize(index + 1);
  Segment& segment = segments_[index];
  segment.packets.clear();
  if (index == 0) {
    segment.packets = history_.packets();
    segment.probings = 0;
  } else {
    for (std::size_t k = start - leadIn(start); k < start; ++k)
      segment.packets.push_back(demuxer_.peek(k));
    if (segment.probings == AACNoiseProbe::kMostProbings) segment.ownCodec.reset();
    if (!segment.ownCodec) {
      segment.ownCodec = openCodec(demuxer_);
      segment.probings = 0;
    }
  }
  segment.leadInPackets = segment.packets.size();
  for (std::size_t k = start; k < end; ++k) segment.packets.push_back(demuxer_.peek(k));
  segment.codec = segment.ownCodec.get();
}

/// Up to the segment's end or its first packet that cannot be decoded. The first segment's decoder
/// has had its lead-in.
void SegmentedDecoding::decode(Segment& segment) const {
  segment.compared.clear();
  segment.frames.clear();
  segment.decodedPackets = 0;
  segment.hasFailed = false;
  const FramePointer frame = makeFrame();
  const bool isFirst = &segment == &segments_.front();
  for (std::size_t i = isFirst ? segment.leadInPackets : 0;
       i < segment.packets.size() && !segment.hasFailed; ++i) {
    const bool isOwn = i >= segment.leadInPackets;
    const bool isCompared = !isOwn && i + rule_.comparedPackets >= segment.leadInPackets;
    if (isOwn) ++segment.decodedPackets;
    segment.hasFailed = !decodePacket(*segment.codec, *segment.packets[i], *frame,
                                      isOwn        ? &segment.frames
                                      : isCompared ? &segment.compared
                                                   : nullptr);
  }
  const bool isProbed = probe_ && !segment.hasFailed && segment.decodedPackets > 0;
  segment.hasNoise = isProbed && !probe_->findsNoNoise(*segment.codec, segment.probings++);
}

/// Whether that segment counts when those before it do.
bool SegmentedDecoding::goesOn(std::size_t index) const {
  const Segment& segment = segments_[index];
  if (segment.hasNoise || (probe_ && segment.hasFailed)) return false;
  if (index == 0) return true;
  const Segment& neighbour = segments_[index - 1];
  return !neighbour.hasFailed && neighbour.frames.endsWith(segment.compared);
}

/// Takes the segments over as far as each goes on with the one before.
void SegmentedDecoding::join(std::size_t count, CodecContextPointer& codec) {
  std::size_t valid = 0;
  while (valid < count && goesOn(valid)) ++valid;
  frames_.clear();
  givenFrames_ = 0;
  hasFailed_ = false;
  std::size_t decodedPackets = 0;
  for (std::size_t i = 0; i < valid; ++i) {
    decodedPackets += segments_[i].decodedPackets;
    hasFailed_ = segments_[i].hasFailed;
    for (const FramePointer& frame : segments_[i].frames.pieces()) frames_.push_back(frame.get());
  }
  const bool isBroken = valid < count;
  if (isBroken && probe_)
    codec = replay(demuxer_, valid > 0 ? segments_[valid - 1].packets : history_.packets());
  else if (valid > 1)
    std::swap(codec, segments_[valid - 1].ownCodec);
  if (isBroken)
    giveUp();
  else if (probe_)
    history_.replaceBy(segments_[valid - 1].packets);
  demuxer_.drop(decodedPackets);
  for (std::size_t i = 1; i < count; ++i) {
    if (isBroken)
      segments_[i].ownCodec.reset();
    else
      avcodec_flush_buffers(segments_[i].ownCodec.get());
  }
  // It is the one that has gone on until now, and has been probed.
  if (probe_) segments_[count - 1].ownCodec.reset();
}

}  // namespace orvane
