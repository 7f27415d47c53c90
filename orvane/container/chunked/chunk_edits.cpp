#include "orvane/container/chunked/chunk_edits.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "orvane/container/chunked/marker_texts.h"
#include "orvane/platform/error.h"
#include "orvane/text/number_text.h"
#include "orvane/text/utf8.h"

namespace orvane {
namespace {

constexpr std::uint32_t kNoPlace = std::numeric_limits<std::uint32_t>::max();

std::string lettersOf(FourCC id) {
  std::string letters;
  for (int shift = 24; shift >= 0; shift -= 8) letters += static_cast<char>(id >> shift);
  return letters;
}

/// A name that does not swallow the sentence it stands in.
std::string shortened(const std::string& name) {
  constexpr std::size_t kMostBytes = 60;
  std::size_t end = 0;
  while (end < name.size() && end < kMostBytes)
    end += firstUTF8Character(std::string_view(name).substr(end)).length;
  return end < name.size() ? name.substr(0, end) + "…" : name;
}

}  // namespace

void ChunkEdits::edit(FourCC id, const Edit& edit, std::optional<FourCC> type) {
  const ChunkList& list = stream_.chunkList;
  for (std::size_t i = 0; i < list.chunks.size(); ++i) {
    const Chunk& chunk = list.chunks[i];
    if (chunk.id != id) continue;
    if (type) {
      const HeaderFields head(file_, chunk.bodyOffset, std::min<std::uint64_t>(chunk.size, 4),
                              list.grammar.byteOrder);
      if (head.size() < 4 || head.fourCC(0) != *type) continue;
    }
    const std::string tooOdd = "The chunk \"" + lettersOf(id) + "\" was kept as it is: ";
    if (chunk.size > MarkerTexts::kMaximumBytes) {
      note(tooOdd + "it is larger than 16 MiB");
      continue;
    }
    const HeaderFields body(file_, chunk.bodyOffset, chunk.size, list.grammar.byteOrder);
    HeaderBytes edited = bytes();
    bool isKept = true;
    try {
      isKept = edit(body, edited);
    } catch (const PlatformError&) {
      note(tooOdd + "it is cut short or damaged");
      continue;
    }
    if (!isKept)
      changes_.chunkChanges.emplace_back(i, std::nullopt);
    else if (!std::ranges::equal(edited.bytes(), body.bytes()))
      changes_.chunkChanges.emplace_back(i, edited.bytes());
  }
}

void ChunkEdits::drop(FourCC id, const std::string& why) {
  const auto& chunks = stream_.chunkList.chunks;
  for (std::size_t i = 0; i < chunks.size(); ++i) {
    if (chunks[i].id != id) continue;
    changes_.chunkChanges.emplace_back(i, std::nullopt);
    note(why);
  }
}

std::optional<std::uint32_t> ChunkEdits::placeOf(std::uint32_t frame) const noexcept {
  if (frame == kNoPlace) return frame;
  const auto place = frames_.placeOf(std::int64_t{frame});
  if (!place || *place >= kNoPlace) return std::nullopt;
  return static_cast<std::uint32_t>(*place);
}

std::uint32_t ChunkEdits::lengthOf(std::uint32_t frame, std::uint32_t length,
                                   std::uint32_t place) const noexcept {
  if (length == kNoPlace) return length;
  const std::int64_t end = frames_.endOf(frame, std::int64_t{frame} + length, place);
  return static_cast<std::uint32_t>(std::min<std::int64_t>(end - place, kNoPlace));
}

void ChunkEdits::note(std::string sentence) {
  // A file may have thousands of chunks that all say the same.
  if (std::ranges::find(changes_.notes, sentence) == changes_.notes.end())
    changes_.notes.push_back(std::move(sentence));
}

void ChunkEdits::noteGone(std::string_view noun, std::string_view what,
                          const std::vector<std::string>& names) {
  constexpr std::size_t kMostNames = 10;
  if (names.empty()) return;
  const bool isOne = names.size() == 1;
  std::string sentence = std::to_string(names.size()) + " " + std::string(noun);
  sentence += (isOne ? " " : "s ") + std::string(what) + (isOne ? " and is" : " and are") + " gone";
  for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i)
    sentence += (i == 0 ? ": " : ", ") + shortened(names[i]);
  if (names.size() > kMostNames)
    sentence += " and " + std::to_string(names.size() - kMostNames) + " more";
  note(std::move(sentence));
}

std::string ChunkEdits::placeName(double frame) const {
  const double rate = stream_.description.dataFormat.sampleRate;
  return "at " + NumberText::fixed(frame / rate, 3) + " s";
}

}  // namespace orvane
