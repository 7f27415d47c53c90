#include "orvane/container/ffmpeg/celt_frame.h"

#include <algorithm>
#include <cstddef>

namespace orvane {
namespace {

/// The first configuration without linear prediction (3.1).
constexpr unsigned kFirstCELT = 16;

unsigned configurationOf(std::span<const std::uint8_t> packet) {
  return packet[0] >> 3;
}

/// The range decoder of 4.1, as far as these symbols need it.
class RangeDecoder {
 public:
  explicit RangeDecoder(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
    const unsigned first = next();
    value_ = 127 - (first >> 1);
    left_ = first & 1;
    normalize();
  }

  /// A bit that is set once in 2^`log` times (4.1.3.2).
  bool bit(unsigned log) {
    const std::uint32_t part = range_ >> log;
    const bool isSet = value_ < part;
    take(isSet ? 0 : part, isSet ? part : range_ - part);
    return isSet;
  }

  /// One of `count` equally likely values (4.1.5), which nobody asks for.
  void passUniform(std::uint32_t count) {
    const std::uint32_t unit = range_ / count;
    const std::uint32_t above = std::min(value_ / unit, count - 1);
    const bool isFirst = above == count - 1;
    take(unit * above, isFirst ? range_ - unit * above : unit);
  }

  /// The post-filter's tap set, with probabilities of 2, 1 and 1 of 4 (4.3.7.1).
  void passTapSet() {
    const std::uint32_t quarter = range_ >> 2;
    if (value_ >= 2 * quarter)
      take(2 * quarter, range_ - 2 * quarter);
    else if (value_ >= quarter)
      take(quarter, quarter);
    else
      take(0, quarter);
  }

 private:
  unsigned next() { return at_ < bytes_.size() ? bytes_[at_++] : 0U; }

  void take(std::uint32_t below, std::uint32_t range) {
    value_ -= below;
    range_ = range;
    normalize();
  }

  void normalize() {
    while (range_ <= std::uint32_t{1} << 23) {
      const unsigned byte = next();
      const unsigned symbol = left_ << 7 | byte >> 1;
      left_ = byte & 1;
      range_ <<= 8;
      value_ = ((value_ << 8) + (255 - symbol)) & 0x7FFFFFFF;
    }
  }

  std::span<const std::uint8_t> bytes_;
  std::size_t at_ = 0;
  std::uint32_t range_ = 128;
  std::uint32_t value_ = 0;
  unsigned left_ = 0;  ///< bit of the last byte that is not in `value_` yet
};

}  // namespace

bool CELTFrame::isOne(std::span<const std::uint8_t> packet) noexcept {
  return !packet.empty() && configurationOf(packet) >= kFirstCELT;
}

unsigned CELTFrame::duration(std::span<const std::uint8_t> packet) noexcept {
  return 1U << (configurationOf(packet) & 3U);
}

bool CELTFrame::isSteady(std::span<const std::uint8_t> packet) noexcept {
  // Shorter frames may leave symbols out.
  constexpr std::size_t kFewestBytes = 8;
  constexpr unsigned kSilence = 15;
  constexpr unsigned kPostFilter = 1;
  constexpr std::uint32_t kOctaves = 6;
  constexpr unsigned kTransient = 3;
  const bool holdsOneFrame = isOne(packet) && (packet[0] & 3U) == 0;
  if (!holdsOneFrame || packet.size() < 1 + kFewestBytes) return false;
  if (duration(packet) == 1) return true;  // too short to be cut up
  RangeDecoder decoder(packet.subspan(1));
  if (decoder.bit(kSilence)) return true;
  if (decoder.bit(kPostFilter)) {
    decoder.passUniform(kOctaves);
    decoder.passTapSet();
  }
  return !decoder.bit(kTransient);
}

}  // namespace orvane
