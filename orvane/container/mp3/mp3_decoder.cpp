#include "orvane/container/mp3/mp3_decoder.h"

#include <cstddef>
#include <new>

namespace orvane {

MP3Decoder::MP3Decoder() : handle_(mpg123_new(nullptr, nullptr)) {
  // Frames, tags and lengths are looked after elsewhere.
  constexpr long kFlags = MPG123_QUIET | MPG123_FORCE_FLOAT | MPG123_NO_RESYNC |
                          MPG123_NO_READAHEAD | MPG123_IGNORE_INFOFRAME |
                          MPG123_IGNORE_STREAMLENGTH | MPG123_SKIP_ID3V2;
  if (!handle_ || mpg123_param(handle_.get(), MPG123_FLAGS, kFlags, 0) != MPG123_OK)
    throw std::bad_alloc();
}

void MP3Decoder::restart() {
  if (mpg123_open_feed(handle_.get()) != MPG123_OK) throw std::bad_alloc();
}

std::span<const float> MP3Decoder::decode(const MP3Packet& packet) {
  if (mpg123_feed(handle_.get(), reinterpret_cast<const unsigned char*>(packet.bytes.data()),
                  packet.bytes.size()) != MPG123_OK)
    throw std::bad_alloc();
  off_t number = 0;
  unsigned char* audio = nullptr;
  std::size_t bytes = 0;
  int result = mpg123_decode_frame(handle_.get(), &number, &audio, &bytes);
  // The first packet makes it tell the format first.
  if (result == MPG123_NEW_FORMAT)
    result = mpg123_decode_frame(handle_.get(), &number, &audio, &bytes);
  const std::size_t samples = std::size_t{packet.frameCount()} * packet.header.channelCount;
  if (result != MPG123_OK || bytes != samples * sizeof(float)) return {};
  return {reinterpret_cast<const float*>(audio), samples};
}

}  // namespace orvane
