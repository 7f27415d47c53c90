#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/frame_range.h"
#include "orvane/speech/detector/silero_vad_tuning.h"
#include "orvane/speech/detector/vad_manager.h"
#include "orvane/speech/dialogue/dialogue_region.h"

/// Where somebody speaks in a source.
namespace orvane::cli::SourceSpeech {

struct Detected {
  std::vector<DialogueRegion> regions{};
  double durationSeconds = 0;  ///< of the source
};

/// Detects it in a source that nothing has been read of, with a model that was made for the
/// tuning's threshold. Any number of threads may use a model at once. Throws `PlatformError` where
/// that is not possible, and what reading throws.
Detected detect(AudioSource& source, const VadManager& model, const SileroVADTuning& tuning,
                std::size_t threadCount);

/// Throws `PlatformError` when there is no such sidecar, and what loading throws.
std::vector<DialogueRegion> load(const std::filesystem::path& sidecar);

/// The nearest frames; regions between two frames are left out.
std::vector<FrameRange> framesOf(const std::vector<DialogueRegion>& regions, double sampleRate);

}  // namespace orvane::cli::SourceSpeech
