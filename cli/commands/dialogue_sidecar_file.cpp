#include "cli/commands/dialogue_sidecar_file.h"

#include <algorithm>
#include <utility>

#include "cli/usage_error.h"
#include "orvane/container/audio_file.h"
#include "orvane/edit/edit_output_guard.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/rawpcm/raw_pcm_reader.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"
#include "orvane/text/iso8601_date.h"
#include "orvane/text/utf8.h"

namespace orvane::cli::DialogueSidecarFile {
namespace {

constexpr const char* kGenerator = "Orvane";

/// The sidecar as far as it can be read.
std::optional<DialogueSidecar> readable(const InputName& file) {
  try {
    return DialogueSidecarIO::loadForAudio(file.path);
  } catch (const Error&) {
    return std::nullopt;
  }
}

double rawDuration(const InputName& file, const RawPCMFormat& format) {
  const auto size = InputFile(file.path).size();
  const auto frames = format.frameCount(static_cast<std::int64_t>(size));
  if (!frames) throw PlatformError(file.path, "the size of the file does not fit --raw");
  return static_cast<double>(*frames) / format.sampleRate;
}

}  // namespace

std::vector<InputName> resolve(const FileList::Request& request) {
  StandardInput standardInput;
  const auto isStandardInput = [](const std::string& name) { return name == "-"; };
  if (std::any_of(request.names.begin(), request.names.end(), isStandardInput))
    throw UsageError("standard input has no sidecar");
  return FileList::resolve(request, standardInput);
}

std::vector<std::filesystem::path> urls(const std::vector<InputName>& files) {
  std::vector<std::filesystem::path> paths;
  for (const InputName& file : files) paths.push_back(DialogueSidecarIO::sidecarURL(file.path));
  return paths;
}

DialogueSidecar::AudioFileInfo describe(const InputName& file,
                                        const std::optional<RawPCMFormat>& rawFormat,
                                        const std::optional<int>& streamIndex) {
  DialogueSidecar::AudioFileInfo info{.filename = wellFormedUTF8(file.path.filename().string())};
  if (rawFormat) {
    info.sampleRate = rawFormat->sampleRate;
    info.durationSeconds = rawDuration(file, *rawFormat);
    return info;
  }
  const auto audio = AudioFile::open(file.path, {.streamIndex = streamIndex});
  info.sampleRate = audio->description().dataFormat.sampleRate;
  if (info.sampleRate > 0)
    info.durationSeconds = static_cast<double>(audio->frameLength()) / info.sampleRate;
  return info;
}

DialogueSidecar load(const InputName& file) {
  if (auto sidecar = DialogueSidecarIO::loadForAudio(file.path)) return *std::move(sidecar);
  InputFile{file.path};  // a file that is not there has no sidecar either, but that is no news
  throw PlatformError(file.path,
                      "there are no dialogue regions; \"orvane dialogue detect\" or "
                      "\"import\" makes some");
}

void requireReplaceable(const InputName& file, bool force) {
  const auto url = DialogueSidecarIO::sidecarURL(file.path);
  EditOutputGuard::assertNotInPlace(file.path, url);
  if (force) return;
  const auto existing = DialogueSidecarIO::load(url);
  if (!existing || existing->source == DialogueRegionSource::silero) return;
  const bool isEdited = existing->source == DialogueRegionSource::userEdited;
  throw PlatformError(file.path, std::string("the dialogue regions were ") +
                                     (isEdited ? "changed by a user" : "imported") +
                                     "; --force replaces them");
}

DialogueSidecar save(const InputName& file, const DialogueSidecar::AudioFileInfo& audio,
                     std::vector<DialogueRegion> regions, DialogueRegionSource source) {
  const auto now = currentDate();
  const auto existing = readable(file);
  DialogueSidecar sidecar(DialogueSidecar::currentSchemaVersion, kGenerator, ORVANE_VERSION, audio,
                          std::move(regions), existing ? existing->createdAt : now, now, source);
  DialogueSidecarIO::saveForAudio(sidecar, file.path);
  return sidecar;
}

}  // namespace orvane::cli::DialogueSidecarFile
