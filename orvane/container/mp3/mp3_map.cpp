#include "orvane/container/mp3/mp3_map.h"

#include <algorithm>
#include <utility>

#include "orvane/container/mp3/mp3_packet_reader.h"
#include "orvane/container/mp3/trailing_tags.h"
#include "orvane/container/sniff/id3v2_tag.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr int kSurePackets = 3;
constexpr std::size_t kMostEntries = std::size_t{1} << 21;
constexpr std::int64_t kPacketsBetweenQuestions = 4096;
/// How far main data may begin before their packet (ISO/IEC 11172-3, 2.4.2.7).
constexpr std::int64_t kLongestReach = 511;
/// The synthesis window and the overlapping blocks reach back no further.
constexpr std::int64_t kWarmUpPackets = 4;

/// What a stream of sound packets obeys, seen packet by packet.
class SoundStream {
 public:
  explicit SoundStream(std::uint32_t mark) : mark_(mark) {}

  /// Whether the packet belongs to the stream, and what came before is all that it needs.
  bool goesOnWith(const MP3Packet& packet) {
    if (packet.streamMark() != mark_) return false;
    const auto data = readMP3MainData(packet);
    // Main data follow one another: none begins before that of the packet before, none is longer
    // than what is there.
    const bool isSound =
        data && data->back <= reach_ && data->bits <= 8 * (data->back + packet.mainDataBytes());
    if (isSound) reach_ = data->back + packet.mainDataBytes();
    return isSound;
  }

 private:
  std::uint32_t mark_;
  std::size_t reach_ = 0;  ///< back to where the last packet's main data begin
};

bool isOfFormat(const MPEGFrameHeader& a, const MPEGFrameHeader& b) {
  return a.isMPEG1 == b.isMPEG1 && a.sampleRate == b.sampleRate && a.channelCount == b.channelCount;
}

/// Takes off the map's frames what an encoder's tag says. False where it contradicts the packets,
/// or where no packet lies between priming and padding.
bool trim(MP3Map& map) {
  const std::int64_t perPacket = map.head.framesPerPacket;
  map.frameCount = map.packetCount * perPacket;
  if (const auto& tag = map.head.tag) {
    if (tag->packetCount != map.packetCount) return false;
    map.skippedFrames = tag->priming;
    map.frameCount -= tag->priming + tag->padding;
  }
  return map.frameCount > 2 * perPacket;
}

}  // namespace

std::int64_t MP3Map::entryBefore(std::int64_t first) const noexcept {
  const auto placeOf = [&](std::int64_t index) {
    return static_cast<std::int64_t>(entries[static_cast<std::size_t>(index)]);
  };
  const auto mainDataBetween = [&](std::int64_t from, std::int64_t to) {
    const auto overhead = static_cast<std::int64_t>(head.overheadPerPacket);
    return placeOf(to) - placeOf(from) - overhead * kEntryStep * (to - from);
  };
  const std::int64_t last = first / kEntryStep;
  std::int64_t index = std::max<std::int64_t>(first - kWarmUpPackets, 0) / kEntryStep;
  while (index > 0 && mainDataBetween(index, last) < kLongestReach) --index;
  return index * kEntryStep;
}

std::int64_t MP3Map::reachableFrames() const noexcept {
  const auto packets = kEntryStep * static_cast<std::int64_t>(entries.size());
  return std::min(frameCount, packets * head.framesPerPacket - skippedFrames);
}

std::optional<MP3Head> readMP3Head(const std::shared_ptr<const InputFile>& file) {
  MP3PacketReader reader(file, file->size());
  reader.seek(endOfID3v2Tags(*file));
  MP3Head head{.start = reader.place()};
  auto packet = reader.next();
  if (packet && holdsEncoderTag(*packet)) {
    const MPEGFrameHeader format = packet->header;
    head.tag = readEncoderTag(*packet);
    head.start = reader.place();
    packet = reader.next();
    if (!head.tag || !packet || !isOfFormat(format, packet->header)) return {};
  }
  if (!packet) return {};
  head.format = packet->header;
  head.framesPerPacket = packet->frameCount();
  head.overheadPerPacket = packet->longestOverhead();
  head.streamMark = packet->streamMark();
  SoundStream stream(head.streamMark);
  for (int i = 0; i < kSurePackets; ++i, packet = reader.next())
    if (!packet || !stream.goesOnWith(*packet)) return {};
  return head;
}

std::optional<MP3Map> mapMP3(const std::shared_ptr<const InputFile>& file,
                             ProgressObserver* observer) {
  const auto head = readMP3Head(file);
  if (!head) return {};
  MP3Map map{.head = *head, .end = startOfTrailingTags(*file)};
  MP3PacketReader reader(file, map.end);
  reader.seek(head->start);
  SoundStream stream(head->streamMark);
  while (reader.place() < map.end) {
    const bool isAsked = observer != nullptr && map.packetCount % kPacketsBetweenQuestions == 0;
    if (isAsked && observer->isCancelled()) throw Cancelled();
    if (map.packetCount % MP3Map::kEntryStep == 0 && map.entries.size() < kMostEntries)
      map.entries.push_back(reader.place());
    const auto packet = reader.next();
    if (!packet || !stream.goesOnWith(*packet)) return {};
    ++map.packetCount;
  }
  return trim(map) ? std::optional(std::move(map)) : std::nullopt;
}

}  // namespace orvane
