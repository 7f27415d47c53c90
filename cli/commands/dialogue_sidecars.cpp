#include "cli/commands/dialogue_sidecars.h"

#include <algorithm>
#include <cmath>
#include <system_error>
#include <utility>

#include "cli/output/number_text.h"
#include "cli/usage_error.h"
#include "orvane/audio/audio_source.h"
#include "orvane/edit/edit_output_guard.h"
#include "orvane/platform/error.h"
#include "orvane/platform/full_path.h"
#include "orvane/platform/input_file.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"
#include "orvane/text/iso8601_date.h"
#include "orvane/text/utf8.h"

namespace orvane::cli {
namespace {

constexpr const char* kGenerator = "Orvane";

/// Absent when there is none.
std::optional<DialogueSidecar> stored(const std::filesystem::path& url) {
  return withTypedName(url, [&url] { return DialogueSidecarIO::load(url); });
}

/// The sidecar as far as it can be read.
std::optional<DialogueSidecar> readable(const std::filesystem::path& url) {
  try {
    return DialogueSidecarIO::load(url);
  } catch (const Error&) {
    return std::nullopt;
  }
}

/// The header's count is that of the samples only where they are stored one by one.
std::int64_t decodedFrames(AudioSource& source) {
  if (!source.identity() || source.identity()->pcmEncoding) return source.frameLength();
  constexpr std::uint32_t kPieceFrames = 1U << 17;
  const auto piece = source.makeBuffer(kPieceFrames);
  std::int64_t frames = 0;
  do {
    source.read(*piece);
    frames += piece->frameLength();
  } while (piece->frameLength() == piece->frameCapacity());
  return frames;
}

}  // namespace

std::filesystem::path DialogueSidecars::urlOf(const InputName& file) const {
  if (!folder_) return DialogueSidecarIO::sidecarURL(file.path);
  return *folder_ / DialogueSidecarIO::sidecarURL(fullPath(file.path)).relative_path();
}

std::vector<std::filesystem::path> DialogueSidecars::urls(
    const std::vector<InputName>& files) const {
  std::vector<std::filesystem::path> paths;
  for (const InputName& file : files) paths.push_back(urlOf(file));
  return paths;
}

DialogueSidecar DialogueSidecars::load(const InputName& file) const {
  if (auto sidecar = stored(urlOf(file))) return *std::move(sidecar);
  InputFile{file.path};  // a file that is not there has no sidecar either, but that is no news
  throw PlatformError(file.path,
                      "there are no dialogue regions; \"orvane dialogue detect\" or "
                      "\"import\" makes some");
}

void DialogueSidecars::requireReplaceable(const InputName& file, bool force,
                                          bool hasRegions) const {
  const auto url = urlOf(file);
  EditOutputGuard::assertNotInPlace(file.path, url);
  if (force) return;
  const auto existing = stored(url);
  if (!existing) return;
  if (existing->source != DialogueRegionSource::silero) {
    const bool isEdited = existing->source == DialogueRegionSource::userEdited;
    throw PlatformError(file.path, std::string("the dialogue regions were ") +
                                       (isEdited ? "changed by a user" : "imported") +
                                       "; --force replaces them");
  }
  if (!hasRegions && !existing->regions.empty())
    throw PlatformError(file.path,
                        "the list is empty and the detected dialogue regions would be lost; "
                        "--force replaces them");
}

DialogueSidecar DialogueSidecars::save(const InputName& file,
                                       const DialogueSidecar::AudioFileInfo& audio,
                                       std::vector<DialogueRegion> regions,
                                       DialogueRegionSource source) const {
  const auto now = currentDate();
  const auto url = urlOf(file);
  const auto existing = readable(url);
  DialogueSidecar sidecar(DialogueSidecar::currentSchemaVersion, kGenerator, ORVANE_VERSION, audio,
                          std::move(regions), existing ? existing->createdAt : now, now, source);
  if (folder_) {
    std::error_code failure;
    std::filesystem::create_directories(url.parent_path(), failure);
    if (failure) throw PlatformError(url.parent_path(), failure);
  }
  withTypedName(url, [&] { DialogueSidecarIO::save(sidecar, url); });
  return sidecar;
}

bool DialogueSidecars::remove(const InputName& file) const {
  const auto url = urlOf(file);
  std::error_code ignored;
  if (!std::filesystem::exists(url, ignored)) {
    InputFile{file.path};
    return false;
  }
  withTypedName(url, [&url] { DialogueSidecarIO::deleteAt(url); });
  return true;
}

void addSidecarsOption(CLI::App& command, DialogueSidecars& sidecars, const std::string& group) {
  command
      .add_option_function<std::string>(
          "--sidecars",
          [&sidecars](const std::string& folder) {
            if (folder.empty()) throw UsageError("--sidecars names no folder");
            sidecars = DialogueSidecars(folder);
          },
          "Keep the regions in DIR, under the full paths of the files, instead of beside them")
      ->option_text("DIR")
      ->group(group);
}

std::vector<InputName> filesWithSidecars(const FileList::Request& request) {
  StandardInput standardInput;
  const auto isStandardInput = [](const std::string& name) { return name == "-"; };
  if (std::any_of(request.names.begin(), request.names.end(), isStandardInput))
    throw UsageError("standard input has no sidecar");
  return FileList::resolve(request, standardInput);
}

DialogueSidecar::AudioFileInfo describeAudio(const InputName& file,
                                             const std::optional<RawPCMFormat>& rawFormat,
                                             const std::optional<int>& streamIndex) {
  const auto source = AudioSource::open(file.path, rawFormat, {.streamIndex = streamIndex});
  const double sampleRate = source->format().sampleRate;
  return {.filename = wellFormedUTF8(file.path.filename().string()),
          .durationSeconds = static_cast<double>(decodedFrames(*source)) / sampleRate,
          .sampleRate = sampleRate};
}

std::string otherAudioNote(const DialogueSidecar::AudioFileInfo& madeFor, double durationSeconds,
                           double sampleRate) {
  constexpr double kTolerance = 0.001;  // seconds; less is a matter of rounding
  if (sampleRate == madeFor.sampleRate &&
      std::abs(durationSeconds - madeFor.durationSeconds) <= kTolerance)
    return "";
  const auto text = [](double duration, double rate) {
    return NumberText::duration(duration) + " at " + NumberText::sampleRate(rate);
  };
  return "The dialogue regions were made for " + text(madeFor.durationSeconds, madeFor.sampleRate) +
         ", the file has " + text(durationSeconds, sampleRate) + ".";
}

}  // namespace orvane::cli
