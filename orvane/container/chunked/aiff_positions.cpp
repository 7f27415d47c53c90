#include "orvane/container/chunked/aiff_positions.h"

#include <algorithm>
#include <set>

#include "orvane/container/chunked/marker_texts.h"

namespace orvane::AIFFPositions {
namespace {

using Identifiers = std::set<std::uint16_t>;

/// A count, then markers: identifier, frame, a name with its length that fill an even size.
Identifiers followMarks(ChunkEdits& edits) {
  Identifiers gone;
  std::vector<std::string> goneNames;
  edits.edit(fourCCFrom("MARK"), [&](const HeaderFields& body, HeaderBytes& edited) {
    constexpr std::size_t kName = 6;
    const std::uint16_t count = body.u16(0);
    std::uint16_t keptCount = 0;
    std::vector<std::pair<std::uint16_t, std::string>> goneHere;
    HeaderBytes kept = edits.bytes();
    std::size_t at = 2;
    for (std::uint16_t i = 0; i < count; ++i) {
      const std::uint16_t id = body.u16(at);
      const std::uint32_t frame = body.u32(at + 2);
      const std::size_t length = body.u8(at + kName);
      const std::string name = MarkerTexts::textOf(body.text(at + kName + 1, length));
      const std::size_t end = std::min(at + kName + 1 + length + (length + 1) % 2, body.size());
      if (const auto place = edits.placeOf(frame)) {
        ++keptCount;
        kept.u16(id).u32(*place).text(body.text(at + kName, end - at - kName));
      } else {
        goneHere.emplace_back(id, name.empty() ? edits.placeName(frame) : name);
      }
      at = end;
    }
    edited.u16(keptCount).append(kept.bytes()).text(body.rest(at));
    for (const auto& [id, name] : goneHere) {
      gone.insert(id);
      goneNames.push_back(name);
    }
    return keptCount > 0 || count == 0;
  });
  edits.noteGone("marker", "lay in removed audio", goneNames);
  return gone;
}

/// The sustaining and the releasing loop: kind (0 for none), first and last marker.
void followLoops(ChunkEdits& edits, const Identifiers& gone) {
  constexpr std::size_t kLoops = 8;
  constexpr std::size_t kLoop = 6;
  edits.edit(fourCCFrom("INST"), [&](const HeaderFields& body, HeaderBytes& edited) {
    bool hasLost = false;
    edited.text(body.text(0, kLoops));
    for (std::size_t at = kLoops; at < kLoops + 2 * kLoop; at += kLoop) {
      const std::uint16_t kind = body.u16(at);
      const bool isGone =
          kind != 0 && (gone.contains(body.u16(at + 2)) || gone.contains(body.u16(at + 4)));
      edited.u16(isGone ? 0 : kind).text(body.text(at + 2, 4));
      hasLost = hasLost || isGone;
    }
    edited.text(body.rest(kLoops + 2 * kLoop));
    if (hasLost) edits.note("Loops between markers that are gone are switched off");
    return true;
  });
}

/// A count, then comments: time, marker (0 for none), text with its length, padded.
void followComments(ChunkEdits& edits, const Identifiers& gone) {
  edits.edit(fourCCFrom("COMT"), [&](const HeaderFields& body, HeaderBytes& edited) {
    const std::uint16_t count = body.u16(0);
    edited.u16(count);
    std::size_t at = 2;
    for (std::uint16_t i = 0; i < count; ++i) {
      const std::uint16_t marker = body.u16(at + 4);
      const std::size_t length = body.u16(at + 6);
      const std::string text = body.text(at + 6, 2 + length);
      edited.text(body.text(at, 4)).u16(gone.contains(marker) ? 0 : marker).text(text);
      at += 8 + length;
      if (length % 2 == 1 && at < body.size()) edited.text(body.text(at++, 1));
    }
    edited.text(body.rest(at));
    return true;
  });
}

}  // namespace

void followMarkers(ChunkEdits& edits) {
  const Identifiers gone = followMarks(edits);
  if (gone.empty()) return;
  followLoops(edits, gone);
  followComments(edits, gone);
}

}  // namespace orvane::AIFFPositions
