#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/broadcast_loudness.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/sample_conversion.h"

/// Writes edited audio with everything else that its file holds. Container, sample format and
/// channel order stay, so do all chunks and all bytes that the edit does not make false, and the
/// stored samples whose value did not change.
namespace orvane::AudioRewrite {

struct Options {
  /// Where the edit put the file's frames; without it what both begin and end with is taken for
  /// kept.
  std::optional<FrameMap> frames{};
  /// Seeds dither of the samples that changed; without one none is added.
  std::optional<std::uint64_t> ditherSeed{};
  /// What a WAVE file then states; without it the loudness that it stated is unset.
  std::optional<BroadcastLoudness> loudness{};
  /// What was written is read back and compared: its form with the old one's, its audio with what
  /// was meant to be written, and what was carried over with where it came from.
  bool isReadBack = false;
};

/// What came of it.
struct Outcome {
  bool hasChangedAudio = false;
  SampleLosses samples{};            ///< of changed samples
  std::vector<std::string> notes{};  ///< what the edit made false in the chunks: sentences
};

/// Writes `file`, linear PCM of a container that is written, with `audio` in place of its own to
/// `target`, which is not committed. The audio has the file's channels, in canonical order. The
/// stage is "Writing".
///
/// Throws `PlatformError` with the target's name, for what the container cannot hold too, and
/// `Cancelled` when the observer asks for it.
ORVANE_API Outcome write(const SlicedAudio& audio, const InputFile& file, AtomicFile& target,
                         const Options& options = {}, const Execution& execution = {});

}  // namespace orvane::AudioRewrite
