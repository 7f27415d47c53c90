#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/broadcast_loudness.h"
#include "orvane/container/pcm_encoding.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/sample_conversion.h"

/// Writes edited audio with everything else that its file holds. The container stays, so do sample
/// format and channels unless others are asked for, all chunks and all bytes that this does not
/// make false, and the stored samples whose value did not change.
namespace orvane::AudioRewrite {

struct Options {
  /// Where the edit put the file's frames; without it what both begin and end with is taken for
  /// kept.
  std::optional<FrameMap> frames{};
  /// How samples are to be stored; without it as in the file.
  std::optional<PCMEncoding> encoding{};
  /// The one channel, in canonical order, that the audio is of; without it all of them.
  std::optional<std::size_t> channel{};
  /// Seeds dither of the samples that changed or cannot be stored as they were; without one none is
  /// added.
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
/// `target`, which is not committed. The audio has the file's channels, in canonical order, or the
/// one. The stage is "Writing".
///
/// Throws `PlatformError` with the target's name, for what the container cannot hold too, and
/// `Cancelled` when the observer asks for it.
ORVANE_API Outcome write(const SlicedAudio& audio, const InputFile& file, AtomicFile& target,
                         const Options& options = {}, const Execution& execution = {});

/// The notes of writing that to `target`, if an edit with those frames changes samples. Throws the
/// same.
ORVANE_API std::vector<std::string> foreseenNotes(const InputFile& file,
                                                  const std::filesystem::path& target,
                                                  const FrameMap& frames, bool changesSamples,
                                                  const Options& options = {});

}  // namespace orvane::AudioRewrite
