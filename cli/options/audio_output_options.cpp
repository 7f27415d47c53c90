#include "cli/options/audio_output_options.h"

#include <algorithm>
#include <utility>

#include "cli/options/named_choice.h"
#include "cli/usage_error.h"
#include "orvane/audio/audio_file_identity.h"

namespace orvane::cli {
namespace {

constexpr const char* kGroup = "Output";

constexpr std::pair<std::string_view, AudioContainer> kContainers[] = {
    {"wav", AudioContainer::wave},   {"rf64", AudioContainer::rf64}, {"bw64", AudioContainer::bw64},
    {"w64", AudioContainer::wave64}, {"aiff", AudioContainer::aiff}, {"aifc", AudioContainer::aifc},
    {"caf", AudioContainer::caf}};

constexpr std::pair<std::string_view, PCMEncoding> kEncodings[] = {
    {"u8", {8, false}},   {"s16", {16, false}}, {"s24", {24, false}},
    {"s32", {32, false}}, {"f32", {32, true}},  {"f64", {64, true}}};

}  // namespace

std::optional<AudioContainer> audioContainerFromName(std::string_view name) {
  for (const auto& [text, container] : kContainers)
    if (text == name) return container;
  return std::nullopt;
}

PCMEncoding AudioOutputOptions::encodingFor(const AudioSource& source) const {
  if (encoding) return *encoding;
  if (const auto& raw = source.rawFormat()) {
    using Encoding = RawPCMFormat::Encoding;
    const bool isFloat = raw->encoding == Encoding::float32 || raw->encoding == Encoding::float64;
    return {bitDepth(raw->encoding), isFloat};
  }
  constexpr PCMEncoding kForCompressed{24, false};
  return source.identity() ? source.identity()->pcmEncoding.value_or(kForCompressed)
                           : kForCompressed;
}

AudioContainer AudioOutputOptions::containerFor(const PCMEncoding& stored,
                                                AudioContainer otherwise) const {
  if (container) return *container;
  std::string extension = std::filesystem::path(file).extension().string();
  if (!extension.empty()) extension.erase(0, 1);
  const auto named = audioContainerFromExtension(extension);
  if (!named && AudioFileIdentity::expectedContainers(extension))
    throw UsageError("." + extension + " files are not written; --container says what is");
  return accommodating(named.value_or(otherwise), stored.isFloat);
}

void addAudioOutputOptions(CLI::App& command, AudioOutputOptions& options, bool isRequired) {
  command.add_option("-o,--output", options.file, "The file to write")
      ->option_text("OUT")
      ->required(isRequired)
      ->group(kGroup);
  command.add_flag("--force", options.force, "Replace OUT if it exists")->group(kGroup);
  command.add_flag("--dry-run", options.dryRun, "Say what would be written, and write nothing")
      ->group(kGroup);
  command.add_flag("--json", options.json, "Say what was written as JSON")->group(kGroup);
  command.add_flag("-q,--quiet", options.quiet, "Do not say what was written")->group(kGroup);
}

void addInPlaceOptions(CLI::App& command, AudioOutputOptions& options, const std::string& source) {
  command
      .add_flag(
          "--in-place", options.inPlace,
          "Save into " + source + " itself, with its chunks and all samples that do not change")
      ->group(kGroup);
  command
      .add_flag("--backup", options.backup, "Keep " + source + " as it was as " + source + ".bak")
      ->group(kGroup);
}

void addLoudnessOption(CLI::App& command, AudioOutputOptions& options) {
  command
      .add_flag("--update-loudness", options.updateLoudness,
                "State the loudness as measured in the broadcast extension (bext) of a WAV, RF64, "
                "BW64 or Wave64 file")
      ->group(kGroup);
}

void requireDestination(const AudioOutputOptions& options, bool isHeaderless) {
  if (options.inPlace == !options.file.empty())
    throw UsageError("-o OUT or --in-place says where the edited audio goes, one of them");
  if (!options.inPlace) {
    if (options.backup) throw UsageError("--backup goes with --in-place");
    return;
  }
  // In place nothing about the file is chosen anew.
  if (options.container || options.encoding)
    throw UsageError("--in-place keeps container and encoding");
  if (isHeaderless) throw UsageError("--in-place is not for headerless files");
}

void addAudioFormatOptions(CLI::App& command, AudioOutputOptions& options) {
  command
      .add_option_function<std::string>(
          "--container",
          [&options](const std::string& name) {
            options.container = namedChoice(kContainers, "--container", name);
          },
          "What kind of file; by default OUT's extension says it")
      ->option_text("wav|rf64|bw64|w64|aiff|aifc|caf")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--encoding",
          [&options](const std::string& name) {
            options.encoding = namedChoice(kEncodings, "--encoding", name);
          },
          "How samples are stored; by default as in the source")
      ->option_text("u8|s16|s24|s32|f32|f64")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--dither",
          [&options](const std::string& name) {
            if (name != "tpdf")
              throw UsageError("--dither: the one kind is tpdf, not '" + name + "'");
            options.dither = true;
          },
          "Add triangular dither before samples are rounded that are not the source's")
      ->option_text("tpdf")
      ->group(kGroup);
}

}  // namespace orvane::cli
