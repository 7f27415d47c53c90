#include "orvane/container/chunked/marker_chunks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/marker_texts.h"

namespace orvane::MarkerChunks {
namespace {

using MarkerTexts::bodyOf;
using MarkerTexts::CueText;
using MarkerTexts::textOf;

bool isPossible(double seconds) {
  return std::isfinite(seconds) && seconds >= 0;
}

/// Markers of `mark` chunks that are the end of something or belong to a loop.
bool isEnd(FourCC type) {
  constexpr std::array kEnds = {fourCCFrom("pend"), fourCCFrom("tend"), fourCCFrom("rend"),
                                fourCCFrom("slbg"), fourCCFrom("slen"), fourCCFrom("rlbg"),
                                fourCCFrom("rlen")};
  return std::ranges::find(kEnds, type) != kEnds.end();
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
  const auto texts = MarkerTexts::ofCuePoints(file, stream);
  const std::size_t count = std::min<std::size_t>(cue.u32(0), (cue.size() - 4) / kPoint);
  std::vector<ChapterMark> marks;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = 4 + i * kPoint;
    const double start = cue.u32(at + kFrameInPoint) / rate;
    if (!isPossible(start)) continue;
    ChapterMark mark{.startSeconds = start};
    if (const auto found = texts.find(cue.u32(at)); found != texts.end()) {
      const CueText& text = found->second;
      mark.name = text.name();
      if (text.regionFrames > 0) mark.endSeconds = start + text.regionFrames / rate;
    }
    marks.push_back(std::move(mark));
  }
  return marks;
}

std::vector<ChapterMark> ofAIFF(const InputFile& file, const PCMStream& stream) {
  constexpr std::size_t kMarkerHead = 7;  // identifier, position, length of the name
  const double rate = stream.description.dataFormat.sampleRate;
  const HeaderFields body = bodyOf(file, stream.chunkList.find(fourCCFrom("MARK")),
                                   MarkerTexts::kMaximumBytes, std::endian::big);
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
  const auto names = MarkerTexts::ofStrings(file, stream);
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
