#include "cli/commands/source_speech.h"

#include <algorithm>

#include "cli/options/edit_time.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/speech/detector/speech_detection.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"

namespace orvane::cli::SourceSpeech {
namespace {

std::int64_t frameAt(double seconds, double sampleRate) {
  return EditTime{.seconds = std::max(seconds, 0.0)}.frameAt(sampleRate);
}

}  // namespace

Detected detect(AudioSource& source, const VadManager& model, const SileroVADTuning& tuning,
                std::size_t threadCount) {
  const AudioFormat& format = source.format();
  SpeechDetection detection(model, tuning, format.sampleRate, format.channelCount);
  detectSpeech(source, detection, threadCount);
  const auto history = detection.finish();
  if (!history) throw PlatformError(source.url(), "the audio is too short for speech detection");
  return {.regions = DialogueRegion::fromHistory(*history),
          .durationSeconds = static_cast<double>(detection.frameCount()) / format.sampleRate};
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
