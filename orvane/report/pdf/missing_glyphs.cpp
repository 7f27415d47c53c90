#include "orvane/report/pdf/missing_glyphs.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "orvane/text/utf8.h"

namespace orvane {
namespace {

struct Script {
  char32_t first;
  char32_t last;
  std::string_view package;
};

constexpr std::string_view kCJK = "fonts-noto-cjk";
constexpr std::string_view kEmoji = "fonts-noto-color-emoji";
constexpr std::string_view kOthers = "fonts-noto-core";
constexpr std::array kPackages = {kCJK, kEmoji, kOthers};

// Unicode's blocks of East Asian writing and of pictures.
constexpr std::array kScripts = {
    Script{0x1100, 0x11FF, kCJK},   Script{0x2600, 0x27BF, kEmoji},
    Script{0x2B00, 0x2BFF, kEmoji}, Script{0x2E80, 0x9FFF, kCJK},
    Script{0xA960, 0xA97F, kCJK},   Script{0xAC00, 0xD7FF, kCJK},
    Script{0xF900, 0xFAFF, kCJK},   Script{0xFE30, 0xFE4F, kCJK},
    Script{0xFF00, 0xFFEF, kCJK},   Script{0x1F000, 0x1FAFF, kEmoji},
    Script{0x20000, 0x3FFFF, kCJK},
};

std::string_view packageFor(char32_t character) {
  for (const Script& script : kScripts)
    if (character >= script.first && character <= script.last) return script.package;
  return kOthers;
}

}  // namespace

std::string missingGlyphsWarning(std::span<const char32_t> characters) {
  constexpr std::size_t kShown = 8;
  std::string remedies;
  for (const std::string_view package : kPackages) {
    std::string shown;
    std::size_t count = 0;
    for (const char32_t character : characters) {
      if (packageFor(character) != package) continue;
      if (++count <= kShown) appendUTF8(shown, character);
    }
    if (count == 0) continue;
    remedies += remedies.empty() ? "" : ", ";
    remedies.append(package).append(" for ").append(shown).append(count > kShown ? "…" : "");
  }
  return "The PDF shows boxes in the place of characters that no installed font has: install the "
         "package " +
         remedies + ".";
}

}  // namespace orvane
