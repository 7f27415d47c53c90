#include "orvane/container/chunked/marker_chunks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <string>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/text/utf8.h"

namespace orvane::MarkerChunks {
namespace {

/// All names of a file together; a list of ten thousand marks is far smaller.
constexpr std::uint64_t kMaximumTextBytes = 16U << 20U;

/// Text of a fixed length, ended early by a NUL.
std::string textOf(std::string bytes) {
  bytes.resize(std::min(bytes.find('\0'), bytes.size()));
  return isValidUTF8(bytes) ? bytes : utf8FromLatin1(bytes);
}

/// The chunk's body; empty when there is no such chunk.
HeaderFields bodyOf(const InputFile& file, const Chunk* chunk, std::uint64_t mostBytes,
                    std::endian order) {
  return {file, chunk != nullptr ? chunk->bodyOffset : 0,
          chunk != nullptr ? std::min(chunk->size, mostBytes) : 0, order};
}

bool isPossible(double seconds) {
  return std::isfinite(seconds) && seconds >= 0;
}

/// What an associated data list says about one cue point.
struct CueText {
  std::string label{};
  std::string note{};
  std::string region{};
  std::uint32_t regionFrames = 0;
};

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

std::map<std::uint32_t, CueText> readCueTexts(const InputFile& file, const PCMStream& stream,
                                              std::endian order) {
  std::map<std::uint32_t, CueText> texts;
  for (const Chunk& chunk : stream.chunkList.chunks) {
    if (chunk.id != fourCCFrom("LIST")) continue;
    const HeaderFields list = bodyOf(file, &chunk, kMaximumTextBytes, order);
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

/// Markers of `mark` chunks that are the end of something or belong to a loop.
bool isEnd(FourCC type) {
  constexpr std::array kEnds = {fourCCFrom("pend"), fourCCFrom("tend"), fourCCFrom("rend"),
                                fourCCFrom("slbg"), fourCCFrom("slen"), fourCCFrom("rlbg"),
                                fourCCFrom("rlen")};
  return std::ranges::find(kEnds, type) != kEnds.end();
}

/// The texts of a `strg` chunk: entries of an identifier and an offset, then the bytes.
std::map<std::uint32_t, std::string> readStrings(const InputFile& file, const Chunk* chunk) {
  constexpr std::size_t kEntry = 12;
  std::map<std::uint32_t, std::string> strings;
  const HeaderFields body = bodyOf(file, chunk, kMaximumTextBytes, std::endian::big);
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

}  // namespace

std::vector<ChapterMark> ofRIFF(const InputFile& file, const PCMStream& stream) {
  const std::endian order = stream.chunkList.grammar.byteOrder;
  constexpr std::size_t kPoint = 24;
  constexpr std::size_t kFrameInPoint = 20;
  const double rate = stream.description.dataFormat.sampleRate;
  const HeaderFields cue = bodyOf(file, stream.chunkList.find(fourCCFrom("cue ")),
                                  4 + kPoint * kMaximumEmbeddedChapters, order);
  if (cue.size() < 4 || !(rate > 0)) return {};
  const auto texts = readCueTexts(file, stream, order);
  const std::size_t count = std::min<std::size_t>(cue.u32(0), (cue.size() - 4) / kPoint);
  std::vector<ChapterMark> marks;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = 4 + i * kPoint;
    const double start = cue.u32(at + kFrameInPoint) / rate;
    if (!isPossible(start)) continue;
    ChapterMark mark{.startSeconds = start};
    if (const auto found = texts.find(cue.u32(at)); found != texts.end()) {
      const CueText& text = found->second;
      mark.name = !text.label.empty() ? text.label : !text.note.empty() ? text.note : text.region;
      if (text.regionFrames > 0) mark.endSeconds = start + text.regionFrames / rate;
    }
    marks.push_back(std::move(mark));
  }
  return marks;
}

std::vector<ChapterMark> ofAIFF(const InputFile& file, const PCMStream& stream) {
  constexpr std::size_t kMarkerHead = 7;  // identifier, position, length of the name
  const double rate = stream.description.dataFormat.sampleRate;
  const HeaderFields body =
      bodyOf(file, stream.chunkList.find(fourCCFrom("MARK")), kMaximumTextBytes, std::endian::big);
  if (body.size() < 2 || !(rate > 0)) return {};
  std::vector<ChapterMark> marks;
  std::size_t at = 2;
  for (std::size_t left = std::min<std::size_t>(body.u16(0), kMaximumEmbeddedChapters);
       left > 0 && at + kMarkerHead <= body.size(); --left) {
    const std::size_t length = body.u8(at + 6);
    if (length > body.size() - at - kMarkerHead) break;
    const double start = body.u32(at + 2) / rate;
    if (isPossible(start))
      marks.push_back({.startSeconds = start, .name = textOf(body.text(at + kMarkerHead, length))});
    // The name with its length has an even size.
    at += kMarkerHead + length + (length + 1) % 2;
  }
  return marks;
}

std::vector<ChapterMark> ofCAF(const InputFile& file, const PCMStream& stream) {
  constexpr std::size_t kHead = 8;  // kind of time code, count
  constexpr std::size_t kMarker = 28;
  const double rate = stream.description.dataFormat.sampleRate;
  const HeaderFields body = bodyOf(file, stream.chunkList.find(fourCCFrom("mark")),
                                   kHead + kMarker * kMaximumEmbeddedChapters, std::endian::big);
  if (body.size() < kHead || !(rate > 0)) return {};
  const auto names = readStrings(file, stream.chunkList.find(fourCCFrom("strg")));
  const std::size_t count = std::min<std::size_t>(body.u32(4), (body.size() - kHead) / kMarker);
  std::vector<ChapterMark> marks;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = kHead + i * kMarker;
    const double start = body.float64(at + 4) / rate;
    if (isEnd(body.fourCC(at)) || !isPossible(start)) continue;
    const auto name = names.find(body.u32(at + 12));
    marks.push_back(
        {.startSeconds = start, .name = name != names.end() ? name->second : std::string()});
  }
  return marks;
}

}  // namespace orvane::MarkerChunks
