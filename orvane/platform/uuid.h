#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// A universally unique identifier (RFC 9562). The default one is the nil UUID, all zeros.
struct ORVANE_API UUID {
  std::array<std::uint8_t, 16> bytes{};  ///< in the order of the text

  auto operator<=>(const UUID&) const = default;

  /// A fresh random one (version 4).
  static UUID random();

  /// From the hyphenated text of 36 characters in either case; absent for anything else.
  static std::optional<UUID> parse(std::string_view text) noexcept;

  /// The hyphenated text in upper case: "123E4567-E89B-42D3-A456-426614174000".
  std::string text() const;
};

}  // namespace orvane

template <>
struct std::hash<orvane::UUID> {
  std::size_t operator()(const orvane::UUID& uuid) const noexcept {
    return std::hash<std::string_view>{}(
        {reinterpret_cast<const char*>(uuid.bytes.data()), uuid.bytes.size()});
  }
};
