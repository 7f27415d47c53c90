#include "orvane/container/metadata_changes.h"

#include <algorithm>
#include <iterator>

#include "orvane/container/audio_container.h"
#include "orvane/container/chunked/aiff_positions.h"
#include "orvane/container/chunked/broadcast_extension.h"
#include "orvane/container/chunked/caf_positions.h"
#include "orvane/container/chunked/ixml_time_stamp.h"
#include "orvane/container/chunked/wave_positions.h"

namespace orvane {
namespace {

constexpr FourCC kBroadcastExtension = fourCCFrom("bext");

void dropMeasurements(ChunkEdits& edits) {
  edits.drop(fourCCFrom("PEAK"), "The stored peaks (PEAK) no longer hold and are gone");
  edits.drop(fourCCFrom("levl"), "The stored peak envelope (levl) no longer holds and is gone");
  edits.drop(fourCCFrom("MD5 "), "The stored checksum (MD5) no longer holds and is gone");
}

}  // namespace

void MetadataChanges::add(MetadataChanges more) {
  std::ranges::move(more.chunkChanges, std::back_inserter(chunkChanges));
  std::ranges::move(more.newChunks, std::back_inserter(newChunks));
  std::ranges::move(more.notes, std::back_inserter(notes));
}

MetadataChanges followEdit(const InputFile& file, const PCMStream& stream,
                           const FrameFollower& frames, bool hasChangedAudio,
                           const std::optional<BroadcastLoudness>& loudness) {
  const auto container = audioContainerFromFileTypeID(stream.description.fileTypeID);
  const bool hasMoved = !frames.movesNothing();
  if (!container || (!hasMoved && !hasChangedAudio && !loudness)) return {};
  ChunkEdits edits(file, stream, frames);
  switch (*container) {
    case AudioContainer::caf:
      if (!hasMoved) break;
      CAFPositions::followMarkers(edits);
      CAFPositions::followRegions(edits);
      break;
    case AudioContainer::aiff:
    case AudioContainer::aifc:
      if (hasMoved) AIFFPositions::followMarkers(edits);
      if (hasMoved || hasChangedAudio) dropMeasurements(edits);
      break;
    default:
      if (hasMoved) {
        WavePositions::followCuePoints(edits);
        WavePositions::followLoops(edits);
        WavePositions::followTimers(edits);
        followIXMLTimeStamp(edits);
        if (stream.chunkList.find(fourCCFrom("r64m")) != nullptr)
          edits.note("The markers in r64m were kept as they are, though frames have moved");
      }
      BroadcastExtension::follow(edits, loudness);
      if (hasMoved || hasChangedAudio) dropMeasurements(edits);
      if (loudness && stream.chunkList.find(kBroadcastExtension) == nullptr)
        edits.add(kBroadcastExtension,
                  BroadcastExtension::stating(*loudness, stream.chunkList.grammar.byteOrder));
  }
  return edits.take();
}

}  // namespace orvane
