#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"
#include "orvane/speech/dialogue/dialogue_sidecar.h"

namespace orvane {

/// A sidecar was written by a newer version of the system than this one can read.
class ORVANE_API DialogueSidecarSchemaError : public Error {
 public:
  DialogueSidecarSchemaError(const std::filesystem::path& sidecar, std::int64_t schemaVersion);
  ~DialogueSidecarSchemaError() override;

  std::string_view domain() const noexcept { return "DialogueSidecar"; }
  int code() const noexcept { return 1; }
  /// That of the document.
  std::int64_t schemaVersion() const noexcept { return schemaVersion_; }

 private:
  std::int64_t schemaVersion_;
};

/// Finds, reads, writes and removes the sidecars of audio files.
namespace DialogueSidecarIO {

/// Beside the audio, under its full name with ".dlg.json" behind it: take1.wav.dlg.json.
ORVANE_API std::filesystem::path sidecarURL(const std::filesystem::path& audio);

/// Absent when there is no such file. Regions come as they stand in it, in their order. Throws
/// `PlatformError` when it cannot be read, `DecodingError` (naming file and key) when it is no
/// sidecar, `DialogueSidecarSchemaError` when it is a newer one.
ORVANE_API std::optional<DialogueSidecar> load(const std::filesystem::path& url);

/// Replaces the file whole or, when anything fails, not at all. Throws `EncodingError` and
/// `PlatformError`.
ORVANE_API void save(const DialogueSidecar& sidecar, const std::filesystem::path& url);

/// Does nothing when there is no such file. Throws `PlatformError`.
ORVANE_API void deleteAt(const std::filesystem::path& url);

// The same for the sidecar of an audio file.
ORVANE_API std::optional<DialogueSidecar> loadForAudio(const std::filesystem::path& audio);
ORVANE_API void saveForAudio(const DialogueSidecar& sidecar, const std::filesystem::path& audioURL);
ORVANE_API void deleteForAudio(const std::filesystem::path& audio);

}  // namespace DialogueSidecarIO
}  // namespace orvane
