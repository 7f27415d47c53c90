#include "orvane/container/sniff/text_sniffer.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "orvane/text/extension_text.h"
#include "orvane/text/text_list.h"

namespace orvane {
namespace {

/// As much of a file as is looked at.
constexpr std::size_t kLookedAt = 2048;

bool isUTF16(std::span<const std::byte> head) {
  if (head.size() < 4) return false;
  const bool isLittle = head[0] == std::byte{0xFF} && head[1] == std::byte{0xFE};
  const bool isBig = head[0] == std::byte{0xFE} && head[1] == std::byte{0xFF};
  if (!isLittle && !isBig) return false;
  // Western text has a zero in every other byte.
  for (std::size_t i = isLittle ? 3 : 2; i < std::min<std::size_t>(head.size(), 32); i += 2)
    if (head[i] != std::byte{0}) return false;
  return true;
}

}  // namespace

bool isText(std::span<const std::byte> head) {
  if (head.empty()) return false;
  if (isUTF16(head)) return true;
  const auto looked = head.first(std::min(head.size(), kLookedAt));
  // Bytes above 127 are letters in most codes, but text of nothing else is no text.
  std::size_t plain = 0;
  for (const std::byte byte : looked) {
    const auto c = std::to_integer<unsigned>(byte);
    const bool isSpace = c == '\t' || c == '\n' || c == '\r' || c == '\f';
    if (c == 0x7F || (c < 0x20 && !isSpace)) return false;
    if (c < 0x7F) ++plain;
  }
  return plain * 2 > looked.size();
}

bool isPlaylistText(std::span<const std::byte> head) {
  const std::string_view looked(reinterpret_cast<const char*>(head.data()),
                                std::min(head.size(), kLookedAt));
  std::string text = lowercased(TextList::withoutByteOrderMark(looked));
  text.erase(0, text.find_first_not_of(" \t\r\n\f"));
  for (const std::string_view start : {"#extm3u", "#extinf", "[playlist]", "ffconcat version",
                                       "v=0\n", "v=0\r", "<asx", "<smil", "[reference]"})
    if (text.starts_with(start)) return true;
  if (text.starts_with("<"))
    for (const std::string_view element : {"<mpd", "<playlist", "<smil", "<asx"})
      if (text.find(element) != std::string::npos) return true;
  return text.starts_with("file \"") || text.starts_with("file '");
}

}  // namespace orvane
