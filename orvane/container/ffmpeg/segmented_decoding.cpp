#include "orvane/container/ffmpeg/segmented_decoding.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

#include "orvane/platform/parallel.h"

namespace orvane {
namespace {

constexpr std::size_t kMostThreads = 16;
/// Serial decoding before the first stretch: priming lies behind by then, and short files end.
constexpr std::int64_t kFramesToBegin = std::int64_t{1} << 17;
/// Of a thread's share in a stretch: what it decodes to, by the longest frame so far, and what it
/// is decoded from.
constexpr std::size_t kMostDecodedBytes = std::size_t{8} << 20;
constexpr std::size_t kMostPackets = 4096;
constexpr std::size_t kMostCodedBytes = std::size_t{8} << 20;
/// A segment is worth its lead-in when it is so many times as long.
constexpr std::size_t kLeadInsPerSegment = 4;
/// Where lead-ins cost next to nothing, several shorter segments for each thread end together even
/// though others, like those that measure, take their time from the same processors.
constexpr std::size_t kLeadInsPerShortSegment = 32;
constexpr std::size_t kMostSegmentsPerThread = 4;
/// A segment that decodes to so many times its share is of longer frames than any before it: some
/// bytes may stand for a megabyte.
constexpr std::size_t kMostSurprise = 2;

}  // namespace

SegmentedDecoding::SegmentedDecoding(Demuxer& demuxer, EntryRule rule, std::size_t threadCount)
    : demuxer_(demuxer),
      parameters_(copyOf(*demuxer.stream().codecpar)),
      rule_(rule),
      threadCount_(std::min(threadCount, kMostThreads)) {}

std::unique_ptr<SegmentedDecoding> SegmentedDecoding::of(Demuxer& demuxer,
                                                         std::size_t threadCount) {
  if (threadCount < 2) return nullptr;
  const auto rule = EntryRule::of(*demuxer.stream().codecpar);
  if (!rule) return nullptr;
  return std::unique_ptr<SegmentedDecoding>(new SegmentedDecoding(demuxer, *rule, threadCount));
}

void SegmentedDecoding::note(const AVPacket& packet) {
  if (isGivenUp_) return;
  if (!rule_.note(packet)) giveUp();
  if (rule_.codec() != AV_CODEC_ID_AAC) return;
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
  findPlainPackets(most);
  const std::size_t packets = plain_.size();
  const std::size_t count = cut();
  if (count < 2) {
    packetsToPass_ = packets;
    return false;
  }
  segments_.front().codec = codec.get();
  mostSegmentBytes_ = kMostSurprise * threadCount_ * kMostDecodedBytes / count;
  // Who comes first to the end reads what the next stretch is made of.
  parallelFor(threadCount_, count + 1, [&](std::size_t i) {
    if (i < count)
      decode(segments_[i]);
    else
      readAhead(std::min(most, bounded - packets));
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
  if (rule_.codec() != AV_CODEC_ID_AAC || probe_) return true;
  const auto packets = history_.packets();
  probe_ = AACNoiseProbe::of(demuxer_, *parameters_, *packets.back(), codec.ch_layout.nb_channels);
  return probe_ && probe_->findsNoNoise(*replay(demuxer_, *parameters_, packets), 0);
}

void SegmentedDecoding::giveUp() noexcept {
  isGivenUp_ = true;
  history_.clear();
}

bool SegmentedDecoding::isPlain(const AVPacket& packet) const {
  return rule_.suits(packet) && (!probe_ || probe_->suits(packet));
}

/// Nothing is read behind a packet that is none of them: the demuxer's parameters stay those of the
/// packet that is decoded next.
void SegmentedDecoding::findPlainPackets(std::size_t most) {
  plain_.clear();
  std::size_t bytes = 0;
  while (plain_.size() < most && bytes < threadCount_ * kMostCodedBytes) {
    const AVPacket* packet = demuxer_.peek(plain_.size());
    if (packet == nullptr || !isPlain(*packet)) break;
    bytes += bytesHeldBy(*packet);
    plain_.push_back(packet);
  }
}

/// Has the demuxer read as much as one stretch may hold, behind this one.
void SegmentedDecoding::readAhead(std::size_t most) {
  std::size_t bytes = 0;
  for (std::size_t i = 0; i < most && bytes < threadCount_ * kMostCodedBytes; ++i) {
    const AVPacket* packet = demuxer_.peek(plain_.size() + i);
    if (packet == nullptr || !isPlain(*packet)) break;
    bytes += bytesHeldBy(*packet);
  }
}

/// Shares the plain packets out among so many segments, each decoder getting as much to do; below 2
/// when there are too few packets, or no decoder may begin where it would have to.
std::size_t SegmentedDecoding::cut() {
  const std::size_t packets = plain_.size();
  const auto leadInAt = [&](std::size_t border) {
    return rule_.leadIn(std::span(plain_).first(border));
  };
  const std::size_t extra = leadInAt(packets / 2).value_or(packets);
  const std::size_t count =
      std::min(std::clamp(packets / (kLeadInsPerShortSegment * extra + 1), threadCount_,
                          kMostSegmentsPerThread * threadCount_),
               packets / (kLeadInsPerSegment * extra + 1));
  if (count < 2) return count;
  const std::size_t share = (packets + (count - 1) * extra) / count;
  for (std::size_t i = 0, start = 0; i < count; ++i) {
    const std::size_t end = i + 1 < count ? share + i * (share - extra) : packets;
    const auto leadIn = i == 0 ? std::optional<std::size_t>(0) : leadInAt(start);
    if (!leadIn) return 0;
    lay(i, *leadIn, start, end);
    start = end;
  }
  if (!probe_) return count;
  // Nothing but a lead-in, for a new decoder, whose random numbers are those of the stream.
  const auto leadIn = leadInAt(packets);
  if (!leadIn) return 0;
  if (count < segments_.size()) segments_[count].ownCodec.reset();
  lay(count, *leadIn, packets, packets);
  return count + 1;
}

/// Makes that segment one of the packets from `start` up to `end`.
void SegmentedDecoding::lay(std::size_t index, std::size_t leadIn, std::size_t start,
                            std::size_t end) {
  if (segments_.size() <= index) segments_.resize(index + 1);
  Segment& segment = segments_[index];
  segment.packets.clear();
  if (index == 0) {
    segment.packets = history_.packets();
    segment.probings = 0;
  } else {
    if (segment.probings == AACNoiseProbe::kMostProbings) segment.ownCodec.reset();
    if (!segment.ownCodec) {
      segment.ownCodec = openCodec(demuxer_, *parameters_);
      segment.probings = 0;
    }
  }
  const auto packets = std::span(plain_).subspan(start - leadIn, leadIn + end - start);
  segment.leadInPackets = segment.packets.size() + leadIn;
  segment.packets.insert(segment.packets.end(), packets.begin(), packets.end());
  segment.codec = segment.ownCodec.get();
}

/// Up to the segment's end or its first packet that cannot be decoded. The first segment's decoder
/// has had its lead-in.
void SegmentedDecoding::decode(Segment& segment) const {
  segment.compared.clear();
  segment.frames.clear();
  segment.decodedPackets = 0;
  segment.framesBeforeLast = 0;
  segment.hasFailed = false;
  segment.isCutShort = false;
  const FramePointer frame = makeFrame();
  const bool isFirst = &segment == &segments_.front();
  for (std::size_t i = isFirst ? segment.leadInPackets : 0;
       i < segment.packets.size() && !segment.hasFailed && !segment.isCutShort; ++i) {
    const bool isOwn = i >= segment.leadInPackets;
    const bool isCompared = !isOwn && i + rule_.comparedPackets() >= segment.leadInPackets;
    if (isOwn) ++segment.decodedPackets;
    if (i + rule_.comparedPackets() == segment.packets.size())
      segment.framesBeforeLast = segment.frames.frames();
    segment.hasFailed = !decodePacket(*segment.codec, *segment.packets[i], *frame,
                                      isOwn        ? &segment.frames
                                      : isCompared ? &segment.compared
                                                   : nullptr);
    segment.isCutShort =
        i + 1 < segment.packets.size() && segment.frames.bytes() > mostSegmentBytes_;
  }
  const bool isProbed = probe_ && !segment.hasFailed && segment.decodedPackets > 0;
  segment.hasNoise = isProbed && !probe_->findsNoNoise(*segment.codec, segment.probings++);
}

/// Whether that segment counts when those before it do.
bool SegmentedDecoding::goesOn(std::size_t index) const {
  const Segment& segment = segments_[index];
  if (segment.hasNoise || (probe_ && (segment.hasFailed || segment.isCutShort))) return false;
  if (index == 0) return true;
  const bool hasEntered = !segment.hasFailed || segment.decodedPackets > 0;
  const Segment& neighbour = segments_[index - 1];
  return hasEntered && !neighbour.hasFailed && !neighbour.isCutShort &&
         neighbour.frames.frames() - neighbour.framesBeforeLast == segment.compared.frames() &&
         neighbour.frames.endsWith(segment.compared);
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
  const bool isBroken = valid < count || segments_[valid - 1].isCutShort;
  if (isBroken && probe_)
    codec = replay(demuxer_, *parameters_,
                   valid > 0 ? segments_[valid - 1].packets : history_.packets());
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
