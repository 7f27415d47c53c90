#include "orvane/container/mp3/trailing_tags.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace orvane {
namespace {

/// The `count` bytes before `end`; none where the file has fewer.
std::string textBefore(const InputFile& file, std::uint64_t end, std::size_t count) {
  if (end < count) return {};
  std::string text(count, '\0');
  file.readExactlyAt(end - count, std::as_writable_bytes(std::span(text)));
  return text;
}

std::uint64_t id3v1Bytes(const InputFile& file, std::uint64_t end) {
  constexpr std::size_t kBytes = 128;
  return textBefore(file, end, kBytes).starts_with("TAG") ? kBytes : 0;
}

/// By its footer: a name, a version, the size without a header, the number of items, flags.
std::uint64_t apeBytes(const InputFile& file, std::uint64_t end) {
  constexpr std::size_t kFooterBytes = 32;
  const std::string footer = textBefore(file, end, kFooterBytes);
  if (!footer.starts_with("APETAGEX")) return 0;
  const auto number = [&](std::size_t at) {
    std::uint64_t value = 0;
    for (std::size_t i = 4; i-- > 0;)
      value = value << 8 | static_cast<unsigned char>(footer[at + i]);
    return value;
  };
  const bool hasHeader = number(20) >> 31 != 0;
  return number(12) + (hasHeader ? kFooterBytes : 0);
}

/// It ends with its size in six digits and a name.
std::uint64_t lyricsBytes(const InputFile& file, std::uint64_t end) {
  constexpr std::string_view kName = "LYRICS200";
  constexpr std::size_t kDigits = 6;
  const std::string tail = textBefore(file, end, kDigits + kName.size());
  if (!tail.ends_with(kName)) return 0;
  std::uint64_t size = 0;
  for (const char digit : tail.substr(0, kDigits)) {
    if (digit < '0' || digit > '9') return 0;
    size = 10 * size + static_cast<std::uint64_t>(digit - '0');
  }
  return size + tail.size();
}

}  // namespace

std::uint64_t startOfTrailingTags(const InputFile& file) {
  constexpr std::array kKinds = {id3v1Bytes, apeBytes, lyricsBytes};
  constexpr int kMostTags = 8;
  std::uint64_t end = file.size();
  for (int tags = 0; tags < kMostTags; ++tags) {
    std::uint64_t size = 0;
    for (const auto bytesOf : kKinds) size = std::max(size, bytesOf(file, end));
    if (size == 0 || size > end) break;
    end -= size;
  }
  return end;
}

}  // namespace orvane
