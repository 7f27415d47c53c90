#include "orvane/platform/uuid.h"

#include <sys/random.h>

#include <cerrno>

#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr std::size_t kTextLength = 36;

/// A hyphen stands before these bytes.
constexpr bool isGroupStart(std::size_t byte) {
  return byte == 4 || byte == 6 || byte == 8 || byte == 10;
}

int hexDigit(char c) noexcept {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

UUID UUID::random() {
  UUID uuid;
  // The system gives up to 256 random bytes in one piece; only a start before the pool is ready can
  // be interrupted.
  while (getrandom(uuid.bytes.data(), uuid.bytes.size(), 0) !=
         static_cast<ssize_t>(uuid.bytes.size())) {
    if (errno != EINTR) throw PlatformError("random numbers", {errno, std::generic_category()});
  }
  uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0FU) | 0x40U);  // version 4
  uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3FU) | 0x80U);  // variant
  return uuid;
}

std::optional<UUID> UUID::parse(std::string_view text) noexcept {
  if (text.size() != kTextLength) return std::nullopt;
  UUID uuid;
  std::size_t position = 0;
  for (std::size_t i = 0; i < uuid.bytes.size(); ++i) {
    if (isGroupStart(i) && text[position++] != '-') return std::nullopt;
    const int high = hexDigit(text[position++]);
    const int low = hexDigit(text[position++]);
    if (high < 0 || low < 0) return std::nullopt;
    uuid.bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
  }
  return uuid;
}

std::string UUID::text() const {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string result;
  result.reserve(kTextLength);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (isGroupStart(i)) result += '-';
    result += kDigits[bytes[i] >> 4U];
    result += kDigits[bytes[i] & 0x0FU];
  }
  return result;
}

}  // namespace orvane
