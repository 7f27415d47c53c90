#pragma once

#include "orvane/container/chunked/chunk_edits.h"

/// What chunks of AIFF files say about places in the audio, kept true.
namespace orvane::AIFFPositions {

/// `MARK`, and what refers to its markers: the loops of `INST`, which are switched off where a
/// marker of theirs is gone, and the comments of `COMT`.
void followMarkers(ChunkEdits& edits);

}  // namespace orvane::AIFFPositions
