#include "orvane/container/chunked/marker_texts.h"

#include <algorithm>

#include "orvane/container/chapter_mark.h"
#include "orvane/text/utf8.h"

namespace orvane::MarkerTexts {
namespace {

/// One sub-chunk of an associated data list; `at` is its body.
void readCueText(const HeaderFields& list, FourCC id, std::size_t at, std::size_t size,
                 std::map<std::uint32_t, CueText>& texts) {
  constexpr std::size_t kRegionHead = 20;  // point, length, purpose and four codes of language
  if (size < 4) return;
  CueText& text = texts[list.u32(at)];
  if (id == fourCCFrom("labl")) text.label = textOf(list.text(at + 4, size - 4));
  if (id == fourCCFrom("note")) text.note = textOf(list.text(at + 4, size - 4));
  if (id != fourCCFrom("ltxt") || size < kRegionHead) return;
  text.regionFrames = list.u32(at + 4);
  text.region = textOf(list.text(at + kRegionHead, size - kRegionHead));
}

}  // namespace

std::string textOf(std::string bytes) {
  bytes.resize(std::min(bytes.find('\0'), bytes.size()));
  return isValidUTF8(bytes) ? bytes : utf8FromLatin1(bytes);
}

HeaderFields bodyOf(const InputFile& file, const Chunk* chunk, std::uint64_t mostBytes,
                    std::endian order) {
  return {file, chunk != nullptr ? chunk->bodyOffset : 0,
          chunk != nullptr ? std::min(chunk->size, mostBytes) : 0, order};
}

std::map<std::uint32_t, CueText> ofCuePoints(const InputFile& file, const PCMStream& stream) {
  const std::endian order = stream.chunkList.grammar.byteOrder;
  std::map<std::uint32_t, CueText> texts;
  for (const Chunk& chunk : stream.chunkList.chunks) {
    if (chunk.id != fourCCFrom("LIST")) continue;
    const HeaderFields list = bodyOf(file, &chunk, kMaximumBytes, order);
    if (list.size() < 4 || list.fourCC(0) != fourCCFrom("adtl")) continue;
    for (std::size_t at = 4; at + 8 <= list.size();) {
      const std::size_t size = list.u32(at + 4);
      if (size > list.size() - at - 8) break;
      readCueText(list, list.fourCC(at), at + 8, size, texts);
      at += 8 + size + size % 2;
    }
    if (texts.size() > kMaximumEmbeddedChapters) break;
  }
  return texts;
}

// Entries of an identifier and an offset, then the bytes.
std::map<std::uint32_t, std::string> ofStrings(const InputFile& file, const PCMStream& stream) {
  constexpr std::size_t kEntry = 12;
  std::map<std::uint32_t, std::string> strings;
  const HeaderFields body =
      bodyOf(file, stream.chunkList.find(fourCCFrom("strg")), kMaximumBytes, std::endian::big);
  if (body.size() < 4) return strings;
  const std::size_t count = body.u32(0);
  if (count > (body.size() - 4) / kEntry || count > kMaximumEmbeddedChapters) return strings;
  const std::size_t start = 4 + count * kEntry;
  constexpr std::size_t kLongest = 4096;  // entries may overlap, so each is bounded
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t offset = body.u64(4 + i * kEntry + 4);
    if (offset >= body.size() - start) continue;
    const auto at = static_cast<std::size_t>(start + offset);
    strings[body.u32(4 + i * kEntry)] = textOf(body.text(at, std::min(body.size() - at, kLongest)));
  }
  return strings;
}

}  // namespace orvane::MarkerTexts
