#pragma once

#include <cstdint>
#include <string_view>

namespace orvane {

/// A four-character code: four characters read as a big-endian 32-bit integer.
using FourCC = std::uint32_t;

/// The code of a four-character literal: `fourCCFrom("WAVE")` is 0x57415645.
constexpr FourCC fourCCFrom(std::string_view text) noexcept {
  FourCC code = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto byte = i < text.size() ? static_cast<unsigned char>(text[i]) : 0x20U;
    code = (code << 8) | byte;
  }
  return code;
}

}  // namespace orvane
