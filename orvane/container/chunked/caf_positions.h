#pragma once

#include "orvane/container/chunked/chunk_edits.h"

/// What chunks of CAF files say about places in the audio, kept true.
namespace orvane::CAFPositions {

/// `mark`.
void followMarkers(ChunkEdits& edits);

/// `regn`: a region goes where its beginning was removed, and ends earlier where its end was.
void followRegions(ChunkEdits& edits);

}  // namespace orvane::CAFPositions
