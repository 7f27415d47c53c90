#include "orvane/platform/utf8.h"

#include <cstddef>

namespace orvane {
namespace {

/// Bytes of the well-formed sequence at the start of `text`; 0 when there is none.
std::size_t sequenceLength(std::string_view text) noexcept {
  const auto byte = [&](std::size_t i) -> unsigned {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
  };
  const auto in = [](unsigned value, unsigned low, unsigned high) {
    return value >= low && value <= high;
  };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  if (in(first, 0xC2, 0xDF)) return in(byte(1), 0x80, 0xBF) ? 2 : 0;
  if (in(first, 0xE0, 0xEF)) {
    const unsigned low = first == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : 0xBF;
    return in(byte(1), low, high) && in(byte(2), 0x80, 0xBF) ? 3 : 0;
  }
  if (in(first, 0xF0, 0xF4)) {
    const unsigned low = first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xF4 ? 0x8F : 0xBF;
    return in(byte(1), low, high) && in(byte(2), 0x80, 0xBF) && in(byte(3), 0x80, 0xBF) ? 4 : 0;
  }
  return 0;
}

}  // namespace

bool isValidUTF8(std::string_view text) noexcept {
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace orvane
