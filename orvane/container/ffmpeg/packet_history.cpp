#include "orvane/container/ffmpeg/packet_history.h"

#include <new>
#include <utility>

#include "orvane/container/ffmpeg/frame_run.h"

namespace orvane {

void PacketHistory::add(const AVPacket& packet) {
  packets_.emplace_back(av_packet_clone(&packet));
  if (!packets_.back()) throw std::bad_alloc();
  bytes_ += bytesHeldBy(packet);
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

std::size_t bytesHeldBy(const AVPacket& packet) noexcept {
  std::size_t bytes = bytesOf(packet).size();
  for (int i = 0; i < packet.side_data_elems; ++i) bytes += packet.side_data[i].size;
  return bytes;
}

CodecContextPointer replay(const Demuxer& demuxer, const AVCodecParameters& parameters,
                           std::span<const AVPacket* const> packets) {
  CodecContextPointer codec = openCodec(demuxer, parameters);
  const FramePointer frame = makeFrame();
  for (const AVPacket* packet : packets) decodePacket(*codec, *packet, *frame, nullptr);
  return codec;
}

}  // namespace orvane
