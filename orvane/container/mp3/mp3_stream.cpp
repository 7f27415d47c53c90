#include "orvane/container/mp3/mp3_stream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "orvane/platform/error.h"
#include "orvane/platform/sample_conversion.h"

namespace orvane {
namespace {

constexpr std::int64_t kComparedPackets = 3;
/// The bit reservoir: no packet needs more of what lies before it.
constexpr std::size_t kReservoirBytes = 511;

/// Whether a packet of some bits, decoded to that, ends in nothing: its last granule was dropped.
bool isDropped(const MP3MainData& data, std::span<const float> audio) {
  const auto granule = audio.last(audio.size() / 2);
  return data.bits > 0 &&
         std::all_of(granule.begin(), granule.end(), [](float sample) { return sample == 0; });
}

}  // namespace

MP3Stream::MP3Stream(std::shared_ptr<const InputFile> file, std::shared_ptr<const MP3Map> map)
    : file_(std::move(file)), map_(std::move(map)), reader_(file_, map_->end) {
  enter(0, map_->skippedFrames);
}

bool MP3Stream::seek(std::int64_t frame) {
  const std::int64_t perPacket = map_->head.framesPerPacket;
  const std::int64_t compared = std::min(frame, kComparedPackets * perPacket);
  position_ = frame - compared;
  const std::int64_t first = map_->skippedFrames + position_;
  enter(map_->entryBefore(first / perPacket), first);
  const auto count = static_cast<std::size_t>(compared);
  leadIn_.resize(count * channelCount());
  const std::array<float*, 2> channels = {leadIn_.data(), leadIn_.data() + leadIn_.size() - count};
  read(MutablePlanarView(std::span(channels).first(channelCount()), count));
  return true;
}

/// Begins to decode with that packet, and comes to a frame of what is decoded.
void MP3Stream::enter(std::int64_t packet, std::int64_t decodedFrame) {
  const std::int64_t perPacket = map_->head.framesPerPacket;
  reader_.seek(map_->entries[static_cast<std::size_t>(packet / MP3Map::kEntryStep)]);
  decoder_.restart();
  isSound_ = true;
  std::size_t mainData = packet == 0 ? kReservoirBytes : 0;
  for (; packet <= decodedFrame / perPacket; ++packet) mainData += decodeNext(mainData);
  offset_ = static_cast<std::size_t>(decodedFrame % perPacket);
}

std::size_t MP3Stream::read(MutablePlanarView room) {
  constexpr auto kFloats = SampleEncoding::floatingPoint(sizeof(float));
  const std::size_t perPacket = map_->head.framesPerPacket;
  const std::size_t wanted =
      std::min(room.frameCount(), static_cast<std::size_t>(map_->frameCount - position_));
  for (std::size_t filled = 0, count = 0; filled < wanted; filled += count, offset_ += count) {
    if (offset_ == perPacket) {
      decodeNext(kReservoirBytes);
      offset_ = 0;
    }
    count = std::min(wanted - filled, perPacket - offset_);
    const auto source = packet_.subspan(offset_ * channelCount());
    deinterleaveToFloat(kFloats, std::as_bytes(source).data(), room.slice(filled, count));
  }
  position_ += static_cast<std::int64_t>(wanted);
  return wanted;
}

/// Gives the packet's own main data; so many bytes of them lie before it, as far as the decoder has
/// been given them. A packet that needs more would be dropped, and every later one rounded
/// otherwise than after decoding from the start: it is given without its audio.
std::size_t MP3Stream::decodeNext(std::size_t mainDataBefore) {
  const auto packet = reader_.next();
  const auto data = packet ? readMP3MainData(*packet) : std::nullopt;
  if (!data || packet->streamMark() != map_->head.streamMark)
    throw PlatformError(file_->path(), "The file changes while it is read");
  const bool isWhole = data->back <= mainDataBefore;
  packet_ = decoder_.decode(isWhole ? *packet : emptied(*packet, emptied_));
  if (packet_.empty()) throw PlatformError(file_->path(), "Its audio cannot be decoded");
  if (isWhole && isDropped(*data, packet_)) isSound_ = false;
  return packet->mainDataBytes();
}

bool MP3Stream::isFollowedBy(const MP3Stream& next, PlanarView audio, PlanarView /*nextAudio*/) {
  const std::size_t count = next.leadIn_.size() / next.channelCount();
  const PlanarView end = audio.from(audio.frameCount() - count);
  for (std::size_t c = 0; c < next.channelCount(); ++c)
    if (std::memcmp(end.channel(c), next.leadIn_.data() + c * count, count * sizeof(float)) != 0)
      return false;
  return true;
}

}  // namespace orvane
