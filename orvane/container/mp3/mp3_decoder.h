#pragma once

#include <mpg123.h>

#include <cstdint>
#include <memory>
#include <span>

#include "orvane/container/mp3/mp3_packet.h"

namespace orvane {

/// libmpg123, given one packet after the other. What it makes of a packet depends on those that it
/// has had since `restart`.
class MP3Decoder {
 public:
  MP3Decoder();

  /// As if nothing had been decoded.
  void restart();

  /// The packet's audio, channels interleaved, valid until the next call; zeros from where
  /// libmpg123 finds it damaged. Empty when it refuses it, which it does of no packet that is sound
  /// from outside.
  std::span<const float> decode(const MP3Packet& packet);

 private:
  struct Delete {
    void operator()(mpg123_handle* handle) const noexcept { mpg123_delete(handle); }
  };

  std::unique_ptr<mpg123_handle, Delete> handle_;
};

}  // namespace orvane
