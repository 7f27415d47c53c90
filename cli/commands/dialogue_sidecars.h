#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "cli/options/file_list.h"
#include "orvane/rawpcm/raw_pcm_format.h"
#include "orvane/speech/dialogue/dialogue_sidecar.h"

namespace orvane::cli {

/// The sidecars of files that the user names. They lie beside the files or, for files that must not
/// be touched, in a folder of their own under the files' full paths.
class DialogueSidecars {
 public:
  /// Absent: beside the files.
  explicit DialogueSidecars(std::optional<std::filesystem::path> folder = {})
      : folder_(std::move(folder)) {}

  bool areApart() const { return folder_.has_value(); }

  std::filesystem::path urlOf(const InputName& file) const;
  /// Of all of them, whether or not they exist.
  std::vector<std::filesystem::path> urls(const std::vector<InputName>& files) const;

  /// Throws `PlatformError` when there is none, and what loading throws.
  DialogueSidecar load(const InputName& file) const;

  /// Throws `PlatformError` when the file has regions that somebody changed or imported, regions
  /// that `hasRegions` says would be replaced by none, or a sidecar that cannot be read; with
  /// `force` never. Throws `EditOutputGuardError` when the sidecar is a link to the audio, `force`
  /// or not.
  void requireReplaceable(const InputName& file, bool force, bool hasRegions = true) const;

  /// Writes the regions of the file, and gives what was written. A sidecar that was there before
  /// passes its date of creation on.
  DialogueSidecar save(const InputName& file, const DialogueSidecar::AudioFileInfo& audio,
                       std::vector<DialogueRegion> regions, DialogueRegionSource source) const;

  /// Whether there was one to be removed. Throws `PlatformError`, also when there is neither the
  /// file nor a sidecar.
  bool remove(const InputName& file) const;

 private:
  std::optional<std::filesystem::path> folder_;
};

/// `--sidecars DIR`. `sidecars` must outlive the command.
void addSidecarsOption(CLI::App& command, DialogueSidecars& sidecars, const std::string& group);

/// The files asked for. Throws `UsageError` for standard input, which can have no sidecar.
std::vector<InputName> filesWithSidecars(const FileList::Request& request);

/// What a sidecar notes about its audio: as long as it is when it is decoded, whatever its header
/// says. Throws `Error`.
DialogueSidecar::AudioFileInfo describeAudio(const InputName& file,
                                             const std::optional<RawPCMFormat>& rawFormat,
                                             const std::optional<int>& streamIndex);

/// A sentence when audio of that length and rate is not what regions were made for; else empty.
std::string otherAudioNote(const DialogueSidecar::AudioFileInfo& madeFor, double durationSeconds,
                           double sampleRate);

}  // namespace orvane::cli
