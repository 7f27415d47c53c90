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
  for (const std::string& warning : warnings)
    console.warning(audio.file.filename().string() + ": " + warning);
  if (options.json) {
    document.add("file", audio.file.string());
    document.add("containerName", nameOfContainer(audio.settings));
    document.add("encodingName", PCMEncoding::fromFileFormat(audio.settings)->label());
    document.add("sampleRate", audio.settings.sampleRate.value_or(0));
    document.add("channelCount", audio.settings.channelCount.value_or(0));
    document.add("frameCount", audio.frameCount);
    document.add("clippedSamples", static_cast<std::int64_t>(audio.losses.clipped));
    document.add("nonFiniteSamples", static_cast<std::int64_t>(audio.losses.nonFinite));
    document.add("warnings", warnings);
    document.add("isDryRun", options.dryRun);
    console.print(document.takeLine());
  } else if (!options.quiet) {
    console.print((options.dryRun ? "Would write " : "") + audio.summary() + "\n");
  }
}

}  // namespace orvane::cli
