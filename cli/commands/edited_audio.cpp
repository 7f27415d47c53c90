#include "cli/commands/edited_audio.h"

#include "cli/options/sample_rate_limits.h"
#include "cli/output/number_text.h"
#include "cli/output/output_file.h"
#include "orvane/edit/audio_copy.h"
#include "orvane/edit/pcm_write_settings.h"

namespace orvane::cli::EditedAudio {
namespace {

AudioContainer containerFor(const AudioOutputOptions& options, const AudioSource& source,
                            const PCMEncoding& encoding) {
  const auto own = source.identity()
                       ? audioContainerFromFileTypeID(source.identity()->containerTypeID)
                       : std::nullopt;
  return options.containerFor(encoding, own.value_or(AudioContainer::wave));
}

std::string namesOf(const std::vector<FourCC>& chunks) {
  std::string names;
  for (const FourCC id : chunks)
    names += (names.empty() ? "" : ", ") + (id == 0 ? "chunks of others" : fourCC(id));
  return names;
}

/// Bits that a sample of a float has.
constexpr std::int64_t kFloatBits = 24;

}  // namespace

void requireRate(const AudioSource& source) {
  const double rate = source.format().sampleRate;
  if (!SampleRateLimits::contains(rate))
    throw PlatformError(source.url(), "The sample rate of " + NumberText::sampleRate(rate) +
                                          " lies outside " + SampleRateLimits::description());
}

WrittenAudio outlined(const std::filesystem::path& file, const AudioOutputOptions& options,
                      const AudioSource& source, const AudioFormat& format,
                      std::int64_t frameCount) {
  const PCMEncoding encoding = options.encodingFor(source);
  auto settings = PCMWriteSettings::make(containerFor(options, source, encoding), format, encoding);
  const auto outline = PCMFileWriter::outline(file, settings, frameCount);
  settings.fileTypeID = outline.fileTypeID;
  return {.file = file,
          .settings = std::move(settings),
          .frameCount = frameCount,
          .warnings = outline.warnings};
}

void write(WrittenAudio& written, const AudioOutputOptions& options, PlanarView audio,
           const Execution& execution) {
  written.losses = OutputFile::writing(written.file, [&] {
    PCMFileWriter writer(
        written.file, written.settings, written.frameCount,
        {.existing = OutputFile::existing(options.force),
         .ditherSeed = options.dither ? std::optional<std::uint64_t>(0) : std::nullopt});
    copyAudio(audio, writer, execution);
    writer.commit();
    return writer.losses();
  });
}

void warnOfSource(const AudioSource& source, const std::vector<FourCC>& leftBehind, bool isKept,
                  Console& console) {
  const std::string name = source.url().filename().string() + ": ";
  for (const auto& warning : source.warnings()) console.warning(name + warning.text);
  const PCMEncoding encoding = AudioOutputOptions().encodingFor(source);
  if (!isKept && source.bitDepth() > kFloatBits && encoding != PCMEncoding::float32)
    console.warning(name + "samples are edited as 32-bit floats, which round those of " +
                    std::to_string(source.bitDepth()) + " bits");
  if (!leftBehind.empty())
    console.warning(name + "these chunks are left behind: " + namesOf(leftBehind));
}

}  // namespace orvane::cli::EditedAudio
