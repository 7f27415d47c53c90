#include "orvane/container/chunked/caf_positions.h"

#include <map>
#include <utility>
#include <vector>

#include "orvane/container/chunked/marker_texts.h"

namespace orvane::CAFPositions {
namespace {

/// Kind, frame as a double, identifier, SMPTE time, channel.
constexpr std::size_t kMarker = 28;
/// Kind of SMPTE time, count.
constexpr std::size_t kHead = 8;

using Names = std::map<std::uint32_t, std::string>;

std::string nameOf(const ChunkEdits& edits, const Names& names, std::uint32_t id, double frame) {
  const auto name = names.find(id);
  return name != names.end() && !name->second.empty() ? name->second : edits.placeName(frame);
}

void putMarker(HeaderBytes& edited, const HeaderFields& body, std::size_t at, double place) {
  edited.text(body.text(at, 4)).float64(place).text(body.text(at + 12, kMarker - 12));
}

bool isPlace(double frame) {
  return frame >= 0 && frame < 0x1p53;
}

/// The frame of a region's beginning; absent when it has no markers.
std::optional<double> beginningOf(const HeaderFields& body, std::size_t markers,
                                  std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t at = markers + i * kMarker;
    if (body.fourCC(at) == fourCCFrom("rbeg")) return body.float64(at + 4);
  }
  if (count == 0) return std::nullopt;
  return body.float64(markers + 4);
}

/// Where the end of what begins at `beginning` comes to lie: behind what is left of it.
std::optional<double> placeOfEnd(const FrameFollower& frames, double frame, double beginning) {
  if (!isPlace(beginning) || !isPlace(frame) || frame < beginning) return frames.placeOf(frame);
  const auto first = static_cast<std::int64_t>(beginning);
  const auto end = static_cast<std::int64_t>(frame);
  const std::int64_t start = frames.placeOf(first).value_or(0);
  return static_cast<double>(frames.endOf(first, end, start)) + (frame - static_cast<double>(end));
}

struct Marker {
  FourCC kind = 0;
  double frame = 0;
  std::uint32_t id = 0;
  std::optional<double> place{};
};

/// Markers that only mean something together. A loop needs both of them.
struct Pair {
  FourCC beginning = 0;
  FourCC end = 0;
  bool isLoop = false;
};
constexpr Pair kPairs[] = {{fourCCFrom("rbeg"), fourCCFrom("rend")},
                           {fourCCFrom("slbg"), fourCCFrom("slen"), true},
                           {fourCCFrom("rlbg"), fourCCFrom("rlen"), true}};

/// An end goes with its beginning, and stays with it.
void followPairs(const FrameFollower& frames, std::vector<Marker>& markers) {
  for (const Pair& pair : kPairs) {
    Marker* open = nullptr;
    for (Marker& marker : markers) {
      if (marker.kind == pair.beginning) open = &marker;
      if (marker.kind != pair.end || open == nullptr) continue;
      Marker& beginning = *std::exchange(open, nullptr);
      const bool isGone = !beginning.place || (pair.isLoop && !marker.place);
      if (isGone) beginning.place.reset();
      marker.place = isGone ? std::nullopt : placeOfEnd(frames, marker.frame, beginning.frame);
    }
  }
}

}  // namespace

void followMarkers(ChunkEdits& edits) {
  const Names names = MarkerTexts::ofStrings(edits.file(), edits.stream());
  std::vector<std::string> gone;
  edits.edit(fourCCFrom("mark"), [&](const HeaderFields& body, HeaderBytes& edited) {
    const std::uint32_t count = body.u32(4);
    std::vector<Marker> markers;
    std::size_t at = kHead;
    for (std::uint32_t i = 0; i < count; ++i, at += kMarker) {
      const double frame = body.float64(at + 4);
      markers.push_back({body.fourCC(at), frame, body.u32(at + 12), edits.frames().placeOf(frame)});
    }
    followPairs(edits.frames(), markers);
    std::vector<std::string> goneHere;
    HeaderBytes kept = edits.bytes();
    for (std::size_t i = 0; i < markers.size(); ++i) {
      const Marker& marker = markers[i];
      if (marker.place)
        putMarker(kept, body, kHead + i * kMarker, *marker.place);
      else
        goneHere.push_back(nameOf(edits, names, marker.id, marker.frame));
    }
    edited.text(body.text(0, 4)).u32(kept.size() / kMarker).append(kept.bytes());
    edited.text(body.rest(at));
    gone.insert(gone.end(), goneHere.begin(), goneHere.end());
    return kept.size() > 0 || count == 0;
  });
  edits.noteGone("marker", "lay in removed audio", gone);
}

void followRegions(ChunkEdits& edits) {
  const Names names = MarkerTexts::ofStrings(edits.file(), edits.stream());
  std::vector<std::string> gone;
  std::vector<std::string> goneMarkers;
  // A head like that of `mark`, then regions: identifier, flags, count of markers, markers.
  edits.edit(fourCCFrom("regn"), [&](const HeaderFields& body, HeaderBytes& edited) {
    const std::uint32_t count = body.u32(4);
    std::uint32_t keptCount = 0;
    std::vector<std::string> goneHere;
    std::vector<std::string> goneMarkersHere;
    HeaderBytes kept = edits.bytes();
    std::size_t at = kHead;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::string head = body.text(at, 8);
      const std::uint32_t id = body.u32(at);
      const std::uint32_t markerCount = body.u32(at + 8);
      const std::size_t markers = at + 12;
      const auto beginning = beginningOf(body, markers, markerCount);
      at = markers + markerCount * kMarker;
      if (beginning && !edits.frames().placeOf(*beginning)) {
        goneHere.push_back(nameOf(edits, names, id, *beginning));
        continue;
      }
      HeaderBytes region = edits.bytes();
      for (std::size_t marker = markers; marker < at; marker += kMarker) {
        const double frame = body.float64(marker + 4);
        const bool isEnd = body.fourCC(marker) == fourCCFrom("rend");
        const auto place = isEnd ? placeOfEnd(edits.frames(), frame, beginning.value_or(0))
                                 : edits.frames().placeOf(frame);
        if (place)
          putMarker(region, body, marker, *place);
        else
          goneMarkersHere.push_back(nameOf(edits, names, body.u32(marker + 12), frame));
      }
      ++keptCount;
      kept.text(head).u32(region.size() / kMarker).append(region.bytes());
    }
    edited.text(body.text(0, 4)).u32(keptCount).append(kept.bytes()).text(body.rest(at));
    gone.insert(gone.end(), goneHere.begin(), goneHere.end());
    goneMarkers.insert(goneMarkers.end(), goneMarkersHere.begin(), goneMarkersHere.end());
    return keptCount > 0 || count == 0;
  });
  edits.noteGone("region", "began in removed audio", gone);
  edits.noteGone("region marker", "lay in removed audio", goneMarkers);
}

}  // namespace orvane::CAFPositions
