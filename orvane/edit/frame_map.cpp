#include "orvane/edit/frame_map.h"

namespace orvane {

FrameMap FrameMap::identity(std::int64_t frameCount) {
  FrameMap map{.frameCount = frameCount};
  if (frameCount > 0) map.pieces.push_back({.count = frameCount});
  return map;
}

std::optional<std::int64_t> FrameMap::placeOf(std::int64_t sourceFrame) const noexcept {
  for (const Piece& piece : pieces) {
    const std::int64_t offset = sourceFrame - piece.sourceFirst;
    if (offset >= 0 && offset < piece.count) return piece.place + offset;
  }
  return std::nullopt;
}

std::vector<FrameRange> FrameMap::placesOf(const FrameRange& sourceFrames) const {
  std::vector<FrameRange> places;
  for (const Piece& piece : pieces) {
    const auto common = sourceFrames.within({piece.sourceFirst, piece.sourceFirst + piece.count});
    if (common.isEmpty()) continue;
    const std::int64_t first = piece.place + common.start - piece.sourceFirst;
    places.push_back({first, first + common.length()});
  }
  return places;
}

FrameMap FrameMap::then(const FrameMap& next) const {
  FrameMap both{.frameCount = next.frameCount};
  for (const Piece& first : pieces) {
    for (const Piece& second : next.pieces) {
      const auto common = FrameRange{first.place, first.place + first.count}.within(
          {second.sourceFirst, second.sourceFirst + second.count});
      if (common.isEmpty()) continue;
      both.pieces.push_back({.sourceFirst = first.sourceFirst + common.start - first.place,
                             .count = common.length(),
                             .place = second.place + common.start - second.sourceFirst});
    }
  }
  return both;
}

}  // namespace orvane
