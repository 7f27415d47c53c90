#pragma once

#include "orvane/container/chunked/chunk_edits.h"

/// What chunks of WAVE files say about places in the audio, kept true.
namespace orvane::WavePositions {

/// `cue ` points, their labels, notes and regions in `LIST` chunks of type `adtl`, and the
/// playlists (`plst`) made of them.
void followCuePoints(ChunkEdits& edits);

/// The loops of `smpl`.
void followLoops(ChunkEdits& edits);

/// The timers of `cart` (AES46-2002).
void followTimers(ChunkEdits& edits);

}  // namespace orvane::WavePositions
