#include "orvane/container/mp3/mp3_packet_reader.h"

#include <algorithm>
#include <span>
#include <utility>

namespace orvane {
namespace {

constexpr std::size_t kBufferBytes = std::size_t{64} << 10;
/// No packet is longer: 320 kbit/s at 32 kHz, with padding.
constexpr std::size_t kLongestPacket = 1441;

}  // namespace

MP3PacketReader::MP3PacketReader(std::shared_ptr<const InputFile> file, std::uint64_t end)
    : file_(std::move(file)), end_(end) {}

void MP3PacketReader::seek(std::uint64_t place) noexcept {
  place_ = place;
  bufferedBytes_ = 0;
}

std::optional<MP3Packet> MP3PacketReader::next() {
  const auto isBuffered = [&](std::uint64_t place) {
    return place <= bufferPlace_ + bufferedBytes_ && bufferedBytes_ > 0;
  };
  const std::uint64_t left = end_ - std::min(place_, end_);
  if (!isBuffered(place_ + std::min<std::uint64_t>(kLongestPacket, left))) {
    const std::size_t wanted = std::min<std::uint64_t>(kBufferBytes, left);
    buffer_.resize(std::max(buffer_.size(), wanted));
    bufferPlace_ = place_;
    bufferedBytes_ = file_->readAt(place_, std::span(buffer_).first(wanted));
  }
  const std::size_t offset = place_ - bufferPlace_;
  const auto packet = MP3Packet::at(std::span(buffer_).first(bufferedBytes_).subspan(offset));
  if (packet) place_ += packet->bytes.size();
  return packet;
}

}  // namespace orvane
