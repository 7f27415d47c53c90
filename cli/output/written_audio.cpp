#include "cli/output/written_audio.h"

#include "cli/output/number_text.h"
#include "cli/terminal/terminal_text.h"
#include "orvane/container/audio_container.h"

namespace orvane::cli {
namespace {

std::string nameOfContainer(const AudioFormatSettings& settings) {
  return std::string(displayName(*audioContainerFromFileTypeID(settings.fileTypeID.value_or(0))));
}

std::vector<std::string> warningsOf(const WrittenAudio& audio) {
  std::vector<std::string> warnings = audio.warnings;
  const auto add = [&](std::uint64_t count, const std::string& what) {
    if (count > 0)
      warnings.push_back(NumberText::counted(static_cast<std::int64_t>(count), "sample") + " " +
                         what);
  };
  add(audio.losses.clipped, "clipped");
  add(audio.losses.nonFinite, "without a finite value");
  return warnings;
}

std::string figure(std::optional<float> value, const char* unit) {
  return NumberText::fixed(double{*value}, 2) + " " + unit;
}

std::string description(const BroadcastLoudness& loudness) {
  return "Stated in bext: " + figure(loudness.integratedLUFS, "LUFS") + ", range " +
         figure(loudness.rangeLU, "LU") + ", true peak " + figure(loudness.maxTruePeakDB, "dBTP") +
         ", momentary " + figure(loudness.maxMomentaryLUFS, "LUFS") + ", short-term " +
         figure(loudness.maxShortTermLUFS, "LUFS");
}

void addLoudness(JsonOutput::Document& document, const BroadcastLoudness& loudness) {
  document.add("statedIntegratedLUFS", loudness.integratedLUFS.value());
  document.add("statedLoudnessRange", loudness.rangeLU.value());
  document.add("statedMaxTruePeakDB", loudness.maxTruePeakDB.value());
  document.add("statedMaxMomentaryLUFS", loudness.maxMomentaryLUFS.value());
  document.add("statedMaxShortTermLUFS", loudness.maxShortTermLUFS.value());
}

}  // namespace

std::string WrittenAudio::summary() const {
  const auto encoding = PCMEncoding::fromFileFormat(settings);
  const double rate = settings.sampleRate.value_or(0);
  return TerminalText::escaped(file.string()) + ": " + nameOfContainer(settings) + ", " +
         encoding->label() + ", " + NumberText::sampleRate(rate) + ", " +
         NumberText::counted(settings.channelCount.value_or(0), "channel") + ", " +
         NumberText::duration(static_cast<double>(frameCount) / rate) + " (" +
         NumberText::counted(frameCount, "frame") + ")";
}

void tellOfWrittenAudio(const WrittenAudio& audio, const AudioOutputOptions& options,
                        Console& console, JsonOutput::Document document) {
  const auto warnings = warningsOf(audio);
  for (const std::string& warning : warnings) console.warning(audio.file.string() + ": " + warning);
  if (options.json) {
    document.add("file", audio.file.string());
    document.add("containerName", nameOfContainer(audio.settings));
    document.add("encodingName", PCMEncoding::fromFileFormat(audio.settings)->label());
    document.add("sampleRate", audio.settings.sampleRate.value_or(0));
    document.add("channelCount", audio.settings.channelCount.value_or(0));
    document.add("frameCount", audio.frameCount);
    document.add("clippedSamples", static_cast<std::int64_t>(audio.losses.clipped));
    document.add("nonFiniteSamples", static_cast<std::int64_t>(audio.losses.nonFinite));
    if (audio.loudness) addLoudness(document, *audio.loudness);
    document.add("warnings", warnings);
    document.add("isDryRun", options.dryRun);
    console.print(document.takeLine());
  } else if (!options.quiet) {
    if (audio.loudness) console.print(description(*audio.loudness) + "\n");
    console.print((options.dryRun ? "Would write " : "") + audio.summary() + "\n");
  }
}

}  // namespace orvane::cli
