#include "cli/commands/source_speech.h"

#include <algorithm>
#include <memory>

#include "cli/options/edit_time.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/speech/detector/silero_vad_analyser.h"
#include "orvane/speech/detector/speech_input_maker.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"

namespace orvane::cli::SourceSpeech {
namespace {

std::int64_t frameAt(double seconds, double sampleRate) {
  return EditTime{.seconds = std::max(seconds, 0.0)}.frameAt(sampleRate);
}

}  // namespace

Detected detect(AudioSource& source, const VadManager& model, const SileroVADTuning& tuning,
                const Execution& execution) {
  const auto input = speechInputOf(source);
  if (!input) throw PlatformError(source.url(), "the audio is too short for speech detection");
  // An analyser detects for one caller at a time.
  SileroVADAnalyser analyser(
      [&](const VadManager::Config&) { return std::make_unique<VadManager>(model); });
  const auto history = analyser.classify(*input, tuning, execution);
  if (!history) throw PlatformError(source.url(), "the speech detector gave no result");
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
