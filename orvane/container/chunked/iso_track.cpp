#include "orvane/container/chunked/iso_track.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string_view>
#include <vector>

#include "orvane/container/chunked/chunk_reader.h"
#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/chunked/layout_chunk.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// Version and flags, at the start of many boxes.
constexpr std::uint64_t kFullHead = 4;

HeaderFields fieldsOf(const InputFile& file, const Chunk& box, std::uint64_t most = 64) {
  return {file, box.bodyOffset, std::min(box.size, most), std::endian::big};
}

/// The boxes that lie one behind the other in a stretch of the file, as far as they make sense and
/// up to the first one with the identifier `last`.
std::vector<Chunk> boxesIn(const InputFile& file, std::uint64_t offset, std::uint64_t end,
                           FourCC last = 0) {
  std::vector<Chunk> boxes;
  while (offset < end && end - offset >= 8 && boxes.size() < kMaximumChunks) {
    const HeaderFields header(file, offset, 16, std::endian::big);
    if (header.size() < 8) break;
    std::uint64_t size = header.u32(0);
    std::uint64_t headBytes = 8;
    if (size == 1 && header.size() == 16) {
      size = header.u64(8);
      headBytes = 16;
    } else if (size == 0) {
      size = end - offset;
    }
    if (size < headBytes || size > end - offset) break;
    boxes.push_back({.id = header.fourCC(4),
                     .headerOffset = offset,
                     .bodyOffset = offset + headBytes,
                     .size = size - headBytes});
    if (boxes.back().id == last) break;
    offset += size;
  }
  return boxes;
}

std::vector<Chunk> boxesIn(const InputFile& file, const Chunk& parent, std::uint64_t skip = 0) {
  skip = std::min(skip, parent.size);
  return boxesIn(file, parent.bodyOffset + skip, parent.bodyOffset + parent.size);
}

std::optional<Chunk> find(const std::vector<Chunk>& boxes, std::string_view id) {
  const auto found = std::ranges::find(boxes, fourCCFrom(id), &Chunk::id);
  return found == boxes.end() ? std::nullopt : std::optional(*found);
}

/// The box behind a path of box identifiers.
std::optional<Chunk> find(const InputFile& file, const Chunk& parent,
                          std::initializer_list<std::string_view> path) {
  std::optional<Chunk> box = parent;
  for (const std::string_view id : path) {
    box = find(boxesIn(file, *box), id);
    if (!box) break;
  }
  return box;
}

std::uint32_t trackNumber(const InputFile& file, const Chunk& track) {
  const auto header = find(file, track, {"tkhd"});
  if (!header) return 0;
  const HeaderFields body = fieldsOf(file, *header);
  return body.u32(body.u8(0) == 1 ? 20 : 12);
}

/// A length and its unit as the headers of movies and of media state them.
struct Timing {
  std::uint32_t timescale = 0;
  std::int64_t duration = 0;  ///< 0 when unknown
};

Timing timingOf(const InputFile& file, const Chunk& header) {
  const HeaderFields body = fieldsOf(file, header);
  const bool isLong = body.u8(0) == 1;
  const std::uint64_t duration = isLong ? body.u64(24) : body.u32(16);
  const std::uint64_t unknown = isLong ? std::numeric_limits<std::uint64_t>::max()
                                       : std::numeric_limits<std::uint32_t>::max();
  return {.timescale = body.u32(isLong ? 20 : 12),
          .duration =
              duration == unknown || duration >> 62 != 0 ? 0 : static_cast<std::int64_t>(duration)};
}

/// What the edits leave of media with this timing. Their lengths count in the movie's often coarse
/// unit: one that ends within a unit of the media's end means that end.
std::optional<std::int64_t> editedDuration(const InputFile& file, const Chunk& list,
                                           const Timing& movie, const Timing& media) {
  constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 20;
  if (movie.timescale == 0 || media.timescale == 0 || media.duration == 0) return {};
  const HeaderFields body = fieldsOf(file, list, kMostBytes);
  const bool isLong = body.u8(0) == 1;
  const std::size_t entryBytes = isLong ? 20 : 12;
  const std::size_t count =
      std::min<std::size_t>(body.u32(kFullHead), (body.size() - 2 * kFullHead) / entryBytes);
  const double unit = static_cast<double>(media.timescale) / movie.timescale;
  std::optional<std::int64_t> total;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = 2 * kFullHead + i * entryBytes;
    const std::uint64_t length = isLong ? body.u64(at) : body.u32(at);
    const std::int64_t start = isLong ? static_cast<std::int64_t>(body.u64(at + 8))
                                      : static_cast<std::int32_t>(body.u32(at + 4));
    if (start < 0 || start > media.duration) continue;  // nothing is to be heard
    const double edited = static_cast<double>(length) * unit;
    const auto rest = media.duration - start;
    const bool isToTheEnd = length == 0 || edited > static_cast<double>(rest) - unit;
    total = total.value_or(0) + (isToTheEnd ? rest : std::llround(edited));
  }
  return total;
}

/// The channel layout box stands beside the codec's own boxes in the first sample description, or
/// in QuickTime's box around them.
std::optional<Chunk> layoutBox(const InputFile& file, const Chunk& media) {
  const auto descriptions = find(file, media, {"minf", "stbl", "stsd"});
  if (!descriptions) return {};
  const auto entries = boxesIn(file, *descriptions, 2 * kFullHead);
  if (entries.empty()) return {};
  // QuickTime's versions 1 and 2 have more fields; the ISO's version 1 has not.
  const bool isQuickTime = fieldsOf(file, *descriptions).u8(0) == 0;
  const std::uint16_t version = fieldsOf(file, entries.front()).u16(8);
  const std::uint64_t more = !isQuickTime ? 0 : version == 1 ? 16 : version == 2 ? 36 : 0;
  const auto boxes = boxesIn(file, entries.front(), 28 + more);
  if (const auto layout = find(boxes, "chan")) return layout;
  const auto wrapper = find(boxes, "wave");
  return wrapper ? find(file, *wrapper, {"chan"}) : std::nullopt;
}

ISOTrack readTrack(const InputFile& file, const Chunk& movie, const Chunk& track,
                   std::uint32_t channelCount) {
  ISOTrack result;
  const auto media = find(file, track, {"mdia"});
  if (!media) return result;
  if (auto box = layoutBox(file, *media); box && box->size > kFullHead) {
    box->bodyOffset += kFullHead;
    box->size -= kFullHead;
    result.layout = readLayoutChunk(file, *box, channelCount);
  } else {
    result.layout = monoOrStereoLayout(channelCount);
  }
  const auto edits = find(file, track, {"edts", "elst"});
  const auto movieHeader = find(file, movie, {"mvhd"});
  const auto mediaHeader = find(file, *media, {"mdhd"});
  if (!edits || !movieHeader || !mediaHeader) return result;
  const Timing timing = timingOf(file, *mediaHeader);
  result.timescale = timing.timescale;
  result.duration = editedDuration(file, *edits, timingOf(file, *movieHeader), timing);
  return result;
}

}  // namespace

std::optional<ISOTrack> readISOTrack(const InputFile& file, std::uint32_t trackID,
                                     std::uint32_t channelCount) {
  try {
    const auto movie = find(boxesIn(file, 0, file.size(), fourCCFrom("moov")), "moov");
    if (!movie) return {};
    for (const Chunk& track : boxesIn(file, *movie))
      if (track.id == fourCCFrom("trak") && trackNumber(file, track) == trackID)
        return readTrack(file, *movie, track, channelCount);
  } catch (const PlatformError&) {  // a box too short for its fields
  }
  return {};
}

}  // namespace orvane
