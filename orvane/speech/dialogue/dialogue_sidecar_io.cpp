#include "orvane/speech/dialogue/dialogue_sidecar_io.h"

#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "orvane/platform/atomic_file.h"
#include "orvane/platform/file_text.h"
#include "orvane/speech/dialogue/dialogue_json.h"

namespace orvane {
namespace {

/// Far more than the regions of any recording take; a larger file is something else.
constexpr std::uint64_t kMaximumFileSize = 256U << 20U;

bool isThere(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::exists(path, ignored);
}

}  // namespace

DialogueSidecarSchemaError::DialogueSidecarSchemaError(const std::filesystem::path& sidecar,
                                                       std::int64_t schemaVersion)
    : Error("Dialogue sidecar at " + sidecar.filename().string() + " is schema v" +
            std::to_string(schemaVersion) + ", this version of Orvane reads up to v" +
            std::to_string(DialogueSidecar::currentSchemaVersion) + "."),
      schemaVersion_(schemaVersion) {}
DialogueSidecarSchemaError::~DialogueSidecarSchemaError() = default;

namespace DialogueSidecarIO {

std::filesystem::path sidecarURL(const std::filesystem::path& audio) {
  auto result = audio;
  result += ".dlg.json";
  return result;
}

std::optional<DialogueSidecar> load(const std::filesystem::path& url) {
  if (!isThere(url)) return std::nullopt;
  const auto content = readFileText(url, kMaximumFileSize);
  try {
    auto sidecar = DialogueJSON::sidecar(content);
    if (sidecar.schemaVersion > DialogueSidecar::currentSchemaVersion)
      throw DialogueSidecarSchemaError(url, sidecar.schemaVersion);
    return sidecar;
  } catch (const DecodingError& error) {
    throw DecodingError(error.kind(), error.keyPath(),
                        url.filename().string() + ": " + error.errorDescription());
  }
}

void save(const DialogueSidecar& sidecar, const std::filesystem::path& url) {
  writeFileAtomically(url, DialogueJSON::text(sidecar));
}

void deleteAt(const std::filesystem::path& url) {
  // Never a folder, whatever its name.
  if (isThere(url) && unlink(url.c_str()) != 0)
    throw PlatformError(url, {errno, std::generic_category()});
}

std::optional<DialogueSidecar> loadForAudio(const std::filesystem::path& audio) {
  return load(sidecarURL(audio));
}

void saveForAudio(const DialogueSidecar& sidecar, const std::filesystem::path& audioURL) {
  save(sidecar, sidecarURL(audioURL));
}

void deleteForAudio(const std::filesystem::path& audio) {
  deleteAt(sidecarURL(audio));
}

}  // namespace DialogueSidecarIO
}  // namespace orvane
