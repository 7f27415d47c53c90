#include "cli/commands/source_speech.h"

#include <algorithm>

#include "cli/options/edit_time.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/speech/detector/silero_vad_analyser.h"
#include "orvane/speech/detector/speech_input_maker.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"

namespace orvane::cli::SourceSpeech {
namespace {

/// The detector itself never tells why it has no answer.
[[noreturn]] void throwWhyNothingWasDetected(const AudioSource& source) {
  const VadManager probe{VadManager::Config{}};  // throws when it is the model
  throw PlatformError(source.url(), "the speech detector gave no result");
}

std::int64_t frameAt(double seconds, double sampleRate) {
  return EditTime{.seconds = std::max(seconds, 0.0)}.frameAt(sampleRate);
}

}  // namespace

Detected detect(AudioSource& source, const SileroVADTuning& tuning, const Execution& execution) {
  const auto input = speechInputOf(source);
  if (!input) throw PlatformError(source.url(), "the audio is too short for speech detection");
  const auto history = SileroVADAnalyser::shared().classify(*input, tuning, execution);
  if (!history) throwWhyNothingWasDetected(source);
  return {
      .regions = DialogueRegion::fromHistory(*history),
      .durationSeconds = static_cast<double>(input->sourceFrameCount) / source.format().sampleRate};
}

std::vector<DialogueRegion> load(const std::filesystem::path& sidecar) {
  if (auto loaded = DialogueSidecarIO::load(sidecar)) return std::move(loaded->regions);
  InputFile{sidecar};  // throws the system's sentence
  throw PlatformError(sidecar, "there are no dialogue regions");
}

std::vector<FrameRange> framesOf(const std::vector<DialogueRegion>& regions, double sampleRate) {
  std::vector<FrameRange> frames;
  for (const DialogueRegion& region : regions) {
    const FrameRange range{frameAt(region.start, sampleRate), frameAt(region.end, sampleRate)};
    if (!range.isEmpty()) frames.push_back(range);
  }
  return frames;
}

}  // namespace orvane::cli::SourceSpeech
