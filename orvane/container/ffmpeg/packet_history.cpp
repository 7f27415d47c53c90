#include "orvane/container/ffmpeg/packet_history.h"

#include <new>
#include <utility>

#include "orvane/container/ffmpeg/frame_run.h"

namespace orvane {

void PacketHistory::add(const AVPacket& packet) {
  packets_.emplace_back(av_packet_clone(&packet));
  if (!packets_.back()) throw std::bad_alloc();
  bytes_ += static_cast<std::size_t>(packet.size);
}

void PacketHistory::replaceBy(std::span<const AVPacket* const> packets) {
  PacketHistory other;
  for (const AVPacket* packet : packets) other.add(*packet);
  *this = std::move(other);
}

void PacketHistory::clear() noexcept {
  packets_.clear();
  bytes_ = 0;
}

std::vector<const AVPacket*> PacketHistory::packets() const {
  std::vector<const AVPacket*> all;
  for (const PacketPointer& packet : packets_) all.push_back(packet.get());
  return all;
}

CodecContextPointer replay(const Demuxer& demuxer, std::span<const AVPacket* const> packets) {
  CodecContextPointer codec = openCodec(demuxer);
  const FramePointer frame = makeFrame();
  for (const AVPacket* packet : packets) decodePacket(*codec, *packet, *frame, nullptr);
  return codec;
}

}  // namespace orvane
