#include "cli/commands/edited_audio.h"

#include <algorithm>
#include <iterator>

#include "cli/options/sample_rate_limits.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/number_text.h"
#include "orvane/container/side_chunks.h"
#include "orvane/edit/audio_copy.h"
#include "orvane/edit/in_place_save.h"
#include "orvane/edit/pcm_write_settings.h"
#include "orvane/edit/programme_levels.h"

namespace orvane::cli::EditedAudio {
namespace {

AudioContainer containerFor(const AudioOutputOptions& options, const AudioSource& source,
                            const PCMEncoding& encoding) {
  const auto own = source.identity()
                       ? audioContainerFromFileTypeID(source.identity()->containerTypeID)
                       : std::nullopt;
  return options.containerFor(encoding, own.value_or(AudioContainer::wave));
}

std::vector<std::string> namesOf(const std::vector<FourCC>& chunks) {
  std::vector<std::string> names;
  for (const FourCC id : chunks) names.push_back(id == 0 ? "chunks of others" : fourCC(id));
  return names;
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

/// Bits that a sample of a float has.
constexpr std::int64_t kFloatBits = 24;

AudioFormat formatOf(const AudioSource& source, std::optional<std::size_t> channel) {
  if (!channel) return source.format();
  return {.sampleRate = source.format().sampleRate, .channelCount = 1};
}

AudioRewrite::Options rewriteOptions(const WrittenAudio& written, const AudioOutputOptions& options,
                                     const Origin& origin) {
  AudioRewrite::Options rewrite{.frames = origin.frames, .loudness = written.loudness};
  if (!written.keepsSamples) rewrite.encoding = PCMEncoding::fromFileFormat(written.settings);
  if (origin.source.format().channelCount > 1) rewrite.channel = written.channel;
  if (options.dither) rewrite.ditherSeed = 0;
  return rewrite;
}

/// Throws `PlatformError` for a file that cannot state its loudness.
void requirePlaceForLoudness(const std::filesystem::path& file, FourCC fileTypeID,
                             bool keepsChunks) {
  constexpr AudioContainer kWaves[] = {AudioContainer::wave, AudioContainer::rf64,
                                       AudioContainer::bw64, AudioContainer::wave64};
  if (std::ranges::find(kWaves, *audioContainerFromFileTypeID(fileTypeID)) == std::end(kWaves))
    throw PlatformError(file,
                        "only WAV, RF64, BW64 and Wave64 files have a place for the loudness");
  if (!keepsChunks)
    throw PlatformError(file, "the loudness is only stated in files of the source's container");
}

/// Whether a sample that is not edited is stored as it was, without rounding.
bool holdsSamplesOf(const AudioSource& source, const SampleEncoding& stored) {
  const bool isFloat = AudioOutputOptions().encodingFor(source).isFloat;
  const std::int64_t bits = source.bitDepth() > 0 ? source.bitDepth() : source.sourceBitDepth();
  return !isFloat && bits > 0 && bits <= std::min<std::int64_t>(stored.bits, kFloatBits);
}

/// A copy of the file as it is, "take.wav.bak" for "take.wav", that has no name yet.
AtomicFile backupOf(const AudioSource& source, bool force) {
  std::filesystem::path path = source.url();
  path += ".bak";
  return OutputFile::writing(path, [&] {
    AtomicFile backup(path, OutputFile::existing(force));
    std::vector<std::byte> piece(std::size_t{1} << 20);
    for (std::uint64_t at = 0; at < source.file().size();) {
      const std::size_t count = source.file().readAt(at, piece);
      if (count == 0) throw PlatformError(source.url(), "the file was cut short meanwhile");
      backup.write(std::span(piece).first(count));
      at += count;
    }
    return backup;
  });
}

}  // namespace

void requireRate(const AudioSource& source) {
  const double rate = source.format().sampleRate;
  if (!SampleRateLimits::contains(rate))
    throw PlatformError(source.url(), "The sample rate of " + NumberText::sampleRate(rate) +
                                          " lies outside " + SampleRateLimits::description());
}

AudioOutputOptions settled(AudioOutputOptions options, const AudioSource& source) {
  if (!options.inPlace) return options;
  if (!source.identity() || !source.identity()->isRewritableInPlace())
    throw PlatformError(source.url(), "only linear PCM in WAV, AIFF and CAF is saved in place");
  InPlaceSave::requirePossible(source.url(), source.format().channelCount,
                               source.format().sampleRate);
  options.file = source.url();
  options.container = audioContainerFromFileTypeID(source.identity()->containerTypeID);
  return options;
}

void requireWritable(const std::vector<std::filesystem::path>& files,
                     const AudioOutputOptions& options, const ReadFiles& read, Console& console) {
  for (const auto& file : files) {
    read.requireNone(file);
    if (!options.inPlace) OutputFile::requireWritable(file, options.force);
  }
  warnOfAbandonedFiles(files, console);
}

WrittenAudio outlined(const std::filesystem::path& file, const AudioOutputOptions& options,
                      const AudioSource& source, std::int64_t frameCount,
                      std::optional<std::size_t> channel) {
  const PCMEncoding encoding = options.encodingFor(source);
  auto settings = PCMWriteSettings::make(containerFor(options, source, encoding),
                                         formatOf(source, channel), encoding);
  const auto outline = PCMFileWriter::outline(file, settings, frameCount);
  settings.fileTypeID = outline.fileTypeID;
  const auto& identity = source.identity();
  const bool keepsChunks = options.inPlace || (identity && identity->isRewritableInPlace() &&
                                               outline.fileTypeID == identity->containerTypeID);
  if (options.updateLoudness) requirePlaceForLoudness(file, outline.fileTypeID, keepsChunks);
  return {.file = file,
          .settings = std::move(settings),
          .frameCount = frameCount,
          .sample = outline.sample,
          .channel = channel,
          .keepsChunks = keepsChunks,
          .keepsSamples = keepsChunks && encoding == identity->pcmEncoding,
          .warnings = keepsChunks ? std::vector<std::string>{} : outline.warnings};
}

void write(WrittenAudio& written, const AudioOutputOptions& options, const Origin& origin,
           const SlicedAudio& all, const Execution& execution) {
  const AudioSource& source = origin.source;
  const SlicedAudio audio = written.channel ? all.channel(*written.channel) : all;
  if (options.updateLoudness)
    written.loudness = measureBroadcastLoudness(audio, formatOf(source, written.channel),
                                                written.sample, execution);
  const AudioRewrite::Options rewrite = rewriteOptions(written, options, origin);
  const auto tell = [&](const AudioRewrite::Outcome& outcome) {
    written.losses = outcome.samples;
    written.warnings.insert(written.warnings.end(), outcome.notes.begin(), outcome.notes.end());
  };
  if (options.inPlace) {
    InPlaceSave::Options save{.version = source.file().stamp(),
                              .rewrite = rewrite,
                              .beforehand = {},
                              .execution = execution};
    std::optional<AtomicFile> backup;
    if (options.backup) {
      backup = backupOf(source, options.force);
      save.beforehand = [&] { backup->commit(); };
    }
    const auto outcome = InPlaceSave::write(audio, source.format().sampleRate, written.file, save);
    tell(outcome.rewrite);
    for (const std::string& loss : outcome.metadata.descriptions())
      written.warnings.push_back("could not keep " + loss);
    return;
  }
  OutputFile::writing(written.file, [&] {
    if (written.keepsChunks) {
      AtomicFile target(written.file, OutputFile::existing(options.force));
      tell(AudioRewrite::write(audio, source.file(), target, rewrite, execution));
      target.commit();
    } else {
      PCMFileWriter writer(
          written.file, written.settings, written.frameCount,
          {.existing = OutputFile::existing(options.force), .ditherSeed = rewrite.ditherSeed});
      if (rewrite.ditherSeed && holdsSamplesOf(source, written.sample))
        copyEdited(audio, origin.open(), origin.frames, written.channel, writer, execution);
      else
        copyAudio(audio, writer, execution);
      writer.commit();
      written.losses = writer.losses();
    }
  });
}

void foresee(WrittenAudio& written, const AudioOutputOptions& options, const Origin& origin,
             bool changesSamples) {
  if (!written.keepsChunks) return;
  AudioRewrite::Options rewrite = rewriteOptions(written, options, origin);
  if (options.updateLoudness) rewrite.loudness.emplace();  // whatever it will be
  std::ranges::move(AudioRewrite::foreseenNotes(origin.source.file(), written.file, origin.frames,
                                                changesSamples, rewrite),
                    std::back_inserter(written.warnings));
}

LeftBehind leftBehind(const AudioSource& source, const WrittenAudio& written) {
  if (written.keepsChunks) return {};
  LeftBehind result{.chunks = sideChunks(source.file())};
  result.hasChapters = result.chunks.empty() && !source.chapters().empty();
  result.tags = source.tagNames();
  return result;
}

void addLeftBehind(JsonOutput::Document& document, const LeftBehind& leftBehind) {
  std::vector<std::string> names = namesOf(leftBehind.chunks);
  if (leftBehind.hasChapters) names.emplace_back("chapters");
  for (const std::string& tag : leftBehind.tags) names.push_back("tag " + tag);
  document.add("leftBehind", names);
}

void warnOfSource(const AudioSource& source, const std::string& name, const LeftBehind& leftBehind,
                  bool isKept, Console& console) {
  for (const auto& warning : source.warnings()) console.warning(name + ": " + warning.text);
  const PCMEncoding encoding = AudioOutputOptions().encodingFor(source);
  if (!isKept && source.bitDepth() > kFloatBits && encoding != PCMEncoding::float32)
    console.warning(name + ": samples are edited as 32-bit floats, which round those of " +
                    std::to_string(source.bitDepth()) + " bits");
  if (!leftBehind.chunks.empty())
    console.warning(name + ": these chunks are left behind: " + joined(namesOf(leftBehind.chunks)));
  if (leftBehind.hasChapters) console.warning(name + ": its chapters are left behind");
  if (!leftBehind.tags.empty())
    console.warning(name + ": these tags are left behind: " + joined(leftBehind.tags));
}

}  // namespace orvane::cli::EditedAudio
