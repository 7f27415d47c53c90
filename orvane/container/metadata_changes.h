#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orvane/container/broadcast_loudness.h"
#include "orvane/container/frame_follower.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// What becomes of a file's other chunks when its audio is edited.
struct MetadataChanges {
  /// As `RewriteRequest` takes them; each chunk at most once.
  std::vector<std::pair<std::size_t, std::optional<std::vector<std::byte>>>> chunkChanges{};
  /// Chunks that the file did not have, as `RewriteRequest` takes them.
  std::vector<std::pair<FourCC, std::vector<std::byte>>> newChunks{};
  /// What the file does not say any more: sentences without a full stop, UTF-8. Texts of the file
  /// stand in them as they are.
  std::vector<std::string> notes{};

  /// Those of another kind too, which are of other chunks.
  void add(MetadataChanges more);

  bool operator==(const MetadataChanges&) const = default;
};

/// Keeps true what the file says about its audio, and takes back what an edit makes false.
///
/// - Places follow their frames; those in removed audio go, with their names: cue points,
///   playlists, regions and loops, timers (AES46), the markers of AIFF and CAF.
/// - The time reference (EBU Tech 3285) is that of the first frame.
/// - Measured loudness (the same, version 2) is unset, stored peaks and checksums go. CAF needs
/// none
///   of that: what was measured there names the edit that it belongs to.
///
/// With `loudness` a WAVE file of any kind states that, if need be in a chunk of its own; others
/// have no place for it.
///
/// Chunks that cannot be understood are left as they are, which is said. An edit that moves nothing
/// and changes no sample changes nothing here but the loudness.
ORVANE_API MetadataChanges followEdit(const InputFile& file, const PCMStream& stream,
                                      const FrameFollower& frames, bool hasChangedAudio,
                                      const std::optional<BroadcastLoudness>& loudness = {});

}  // namespace orvane
