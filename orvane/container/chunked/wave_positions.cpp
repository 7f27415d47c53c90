#include "orvane/container/chunked/wave_positions.h"

#include <algorithm>
#include <array>
#include <map>

#include "orvane/container/chunked/marker_texts.h"

namespace orvane::WavePositions {
namespace {

constexpr FourCC kRegion = fourCCFrom("ltxt");

/// A count, then as many entries of `size` bytes, of which `follow` writes those that stay.
template <class Follow>
bool followEntries(const HeaderFields& body, HeaderBytes& edited, HeaderBytes kept,
                   std::size_t size, Follow follow) {
  const std::uint32_t count = body.u32(0);
  std::size_t at = 4;
  for (std::uint32_t i = 0; i < count; ++i, at += size) follow(at, kept);
  edited.u32(kept.size() / size).append(kept.bytes()).text(body.rest(at));
  return kept.size() > 0 || count == 0;
}

/// Cue points and everything that refers to them.
class CueFollower {
 public:
  explicit CueFollower(ChunkEdits& edits) : edits_(edits) {}

  void follow();

 private:
  struct Point {
    std::uint32_t frame = 0;
    std::optional<std::uint32_t> place{};
  };

  bool followPoints(const HeaderFields& body, HeaderBytes& edited);
  bool followPlaylist(const HeaderFields& body, HeaderBytes& edited);
  bool followTexts(const HeaderFields& body, HeaderBytes& edited) const;
  const Point* pointOf(std::uint32_t id) const;

  ChunkEdits& edits_;
  std::map<std::uint32_t, MarkerTexts::CueText> texts_{};
  std::map<std::uint32_t, Point> points_{};  ///< by identifier
  std::vector<std::string> gone_{};
  std::vector<std::string> goneSegments_{};
};

void CueFollower::follow() {
  texts_ = MarkerTexts::ofCuePoints(edits_.file(), edits_.stream());
  using Follow = const HeaderFields&;
  edits_.edit(fourCCFrom("cue "),
              [&](Follow body, HeaderBytes& edited) { return followPoints(body, edited); });
  if (points_.empty()) return;
  edits_.noteGone("marker", "lay in removed audio", gone_);
  edits_.edit(fourCCFrom("plst"),
              [&](Follow body, HeaderBytes& edited) { return followPlaylist(body, edited); });
  edits_.noteGone("playlist segment", "began in removed audio", goneSegments_);
  edits_.edit(
      fourCCFrom("LIST"),
      [&](Follow body, HeaderBytes& edited) { return followTexts(body, edited); },
      fourCCFrom("adtl"));
}

/// Points: identifier, position, chunk, two offsets of that, frame.
bool CueFollower::followPoints(const HeaderFields& body, HeaderBytes& edited) {
  constexpr std::size_t kPoint = 24;
  std::vector<std::pair<std::uint32_t, Point>> points;
  const auto followPoint = [&](std::size_t at, HeaderBytes& kept) {
    const std::uint32_t id = body.u32(at);
    const std::uint32_t position = body.u32(at + 4);
    const std::uint32_t frame = body.u32(at + 20);
    const auto place = edits_.placeOf(frame);
    points.emplace_back(id, Point{frame, place});
    if (!place) return;
    // The position repeats the frame, or it is left at 0, or it counts in a playlist's order.
    const bool isUnused = position == 0 && frame != 0;
    kept.u32(id).u32(isUnused ? 0 : edits_.placeOf(position).value_or(*place));
    kept.text(body.text(at + 8, 12)).u32(*place);
  };
  const bool isKept = followEntries(body, edited, edits_.bytes(), kPoint, followPoint);

  for (const auto& [id, point] : points) {
    Point& known = points_.try_emplace(id, point).first->second;
    if (point.place && !known.place) known = point;
    if (point.place) continue;
    const auto text = texts_.find(id);
    const bool hasName = text != texts_.end() && !text->second.name().empty();
    gone_.push_back(hasName ? text->second.name() : edits_.placeName(point.frame));
  }
  return isKept;
}

/// Segments: cue point, length, repetitions.
bool CueFollower::followPlaylist(const HeaderFields& body, HeaderBytes& edited) {
  constexpr std::size_t kSegment = 12;
  std::vector<std::string> gone;
  const auto followSegment = [&](std::size_t at, HeaderBytes& kept) {
    const std::uint32_t id = body.u32(at);
    const std::uint32_t length = body.u32(at + 4);
    const std::string rest = body.text(at + 8, 4);
    const Point* const point = pointOf(id);
    if (point != nullptr && !point->place)
      gone.push_back(edits_.placeName(point->frame));
    else
      kept.u32(id)
          .u32(point != nullptr ? edits_.lengthOf(point->frame, length, *point->place) : length)
          .text(rest);
  };
  const bool isKept = followEntries(body, edited, edits_.bytes(), kSegment, followSegment);
  goneSegments_.insert(goneSegments_.end(), gone.begin(), gone.end());
  return isKept;
}

/// A type, then chunks that begin with the cue point that they speak of.
bool CueFollower::followTexts(const HeaderFields& body, HeaderBytes& edited) const {
  constexpr std::array kAboutPoints = {fourCCFrom("labl"), fourCCFrom("note"), kRegion,
                                       fourCCFrom("file")};
  edited.text(body.text(0, 4));
  bool hasLost = false;
  std::size_t at = 4;
  while (at + 8 <= body.size()) {
    const FourCC kind = body.fourCC(at);
    const std::size_t size = body.u32(at + 4);
    const std::string chunk = body.text(at, 8 + size);
    const std::size_t end = std::min(at + 8 + size + size % 2, body.size());
    const bool isAboutPoint =
        size >= 4 && std::ranges::find(kAboutPoints, kind) != kAboutPoints.end();
    const Point* const point = isAboutPoint ? pointOf(body.u32(at + 8)) : nullptr;
    if (point != nullptr && !point->place) {
      hasLost = true;
    } else if (point != nullptr && kind == kRegion && size >= 8) {
      const std::uint32_t length = body.u32(at + 12);
      edited.text(chunk.substr(0, 12));
      edited.u32(edits_.lengthOf(point->frame, length, *point->place));
      edited.text(body.text(at + 16, end - at - 16));
    } else {
      edited.text(body.text(at, end - at));
    }
    at = end;
  }
  edited.text(body.rest(at));
  return !hasLost || edited.size() > 4;
}

const CueFollower::Point* CueFollower::pointOf(std::uint32_t id) const {
  const auto found = points_.find(id);
  return found == points_.end() ? nullptr : &found->second;
}

}  // namespace

void followCuePoints(ChunkEdits& edits) {
  CueFollower(edits).follow();
}

void followLoops(ChunkEdits& edits) {
  constexpr std::size_t kHead = 36;
  constexpr std::size_t kLoop = 24;
  constexpr std::size_t kCountInHead = 28;
  std::vector<std::string> gone;
  edits.edit(fourCCFrom("smpl"), [&](const HeaderFields& body, HeaderBytes& edited) {
    const std::uint32_t count = body.u32(kCountInHead);
    std::vector<std::string> goneHere;
    HeaderBytes kept = edits.bytes();
    std::size_t at = kHead;
    for (std::uint32_t i = 0; i < count; ++i, at += kLoop) {
      // Identifier, kind, first frame, last frame, fraction, repetitions.
      const std::string loop = body.text(at, kLoop);
      const auto first = edits.placeOf(body.u32(at + 8));
      const auto last = edits.placeOf(body.u32(at + 12));
      if (first && last && *first <= *last)
        kept.text(loop.substr(0, 8)).u32(*first).u32(*last).text(loop.substr(16));
      else
        goneHere.push_back(edits.placeName(body.u32(at + 8)));
    }
    edited.text(body.text(0, kCountInHead)).u32(kept.size() / kLoop);
    edited.text(body.text(kCountInHead + 4, 4)).append(kept.bytes()).text(body.rest(at));
    gone.insert(gone.end(), goneHere.begin(), goneHere.end());
    return true;
  });
  edits.noteGone("loop", "began or ended in removed audio", gone);
}

void followTimers(ChunkEdits& edits) {
  constexpr std::size_t kTimers = 684;
  constexpr std::size_t kTimerCount = 8;
  constexpr std::size_t kTimer = 8;
  std::vector<std::string> gone;
  edits.edit(fourCCFrom("cart"), [&](const HeaderFields& body, HeaderBytes& edited) {
    std::vector<std::string> goneHere;
    edited.text(body.text(0, kTimers));
    for (std::size_t at = kTimers; at < kTimers + kTimerCount * kTimer; at += kTimer) {
      const FourCC usage = body.fourCC(at);
      const std::uint32_t frame = body.u32(at + 4);
      const auto place = usage == 0 ? frame : edits.placeOf(frame);
      if (!place) goneHere.push_back(MarkerTexts::textOf(body.text(at, 4)));
      edited.fourCC(place ? usage : 0).u32(place.value_or(0));
    }
    edited.text(body.rest(kTimers + kTimerCount * kTimer));
    gone.insert(gone.end(), goneHere.begin(), goneHere.end());
    return true;
  });
  edits.noteGone("cart timer", "lay in removed audio", gone);
}

}  // namespace orvane::WavePositions
