#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "cli/options/file_list.h"
#include "orvane/rawpcm/raw_pcm_format.h"
#include "orvane/speech/dialogue/dialogue_sidecar.h"

/// The sidecar of a file that the user names.
namespace orvane::cli::DialogueSidecarFile {

/// The files asked for. Throws `UsageError` for standard input, beside which no sidecar can lie.
std::vector<InputName> resolve(const FileList::Request& request);

/// The sidecars of these files, whether or not they exist.
std::vector<std::filesystem::path> urls(const std::vector<InputName>& files);

/// What a sidecar notes about its audio. Reads no more than that takes. Throws `PlatformError` and
/// `RawPCMImportError`.
DialogueSidecar::AudioFileInfo describe(const InputName& file,
                                        const std::optional<RawPCMFormat>& rawFormat,
                                        const std::optional<int>& streamIndex);

/// Throws `PlatformError` when there is none, and what loading throws.
DialogueSidecar load(const InputName& file);

/// Throws `PlatformError` when the file has regions that somebody changed or imported, or a sidecar
/// that cannot be read; with `force` never. Throws `EditOutputGuardError` when the sidecar is a
/// link to the audio, `force` or not.
void requireReplaceable(const InputName& file, bool force);

/// Writes the regions beside the file, and gives what was written. A sidecar that was there before
/// passes its date of creation on.
DialogueSidecar save(const InputName& file, const DialogueSidecar::AudioFileInfo& audio,
                     std::vector<DialogueRegion> regions, DialogueRegionSource source);

}  // namespace orvane::cli::DialogueSidecarFile
