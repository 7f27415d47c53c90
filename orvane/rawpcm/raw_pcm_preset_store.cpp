#include "orvane/rawpcm/raw_pcm_preset_store.h"

#include <algorithm>
#include <system_error>

#include "orvane/platform/atomic_file.h"
#include "orvane/platform/error.h"
#include "orvane/platform/file_text.h"
#include "orvane/platform/folder_lock.h"
#include "orvane/platform/user_data_directory.h"
#include "orvane/rawpcm/raw_pcm_coding.h"
#include "orvane/text/caseless.h"

namespace orvane {
namespace {

constexpr json::Style kStyle{.isPretty = true, .sortsKeys = true, .mustBeFinite = true};
/// Far more than anybody's presets take; a larger file is something else.
constexpr std::uint64_t kLargestFile = 64U << 20U;

void makeFolderOf(const std::filesystem::path& file) {
  const auto folder = file.parent_path();
  if (folder.empty()) return;
  std::error_code code;
  std::filesystem::create_directories(folder, code);
  if (code) throw PlatformError(folder, code);
}

}  // namespace

std::filesystem::path RawPCMPresetStore::defaultDirectory() {
  return userDataDirectory() / "Orvane";
}

RawPCMPresetStore::RawPCMPresetStore(const std::filesystem::path& directory)
    : fileURL(directory / fileName) {}

std::vector<RawPCMPreset> RawPCMPresetStore::load() const {
  try {
    return loadIntact();
  } catch (const Error&) {
    return {};
  }
}

std::vector<RawPCMPreset> RawPCMPresetStore::loadIntact() const {
  try {
    return json::decode<std::vector<RawPCMPreset>>(readFileText(fileURL, kLargestFile), kStyle);
  } catch (const PlatformError& error) {
    if (error.code() == std::errc::no_such_file_or_directory) return {};
    throw;
  } catch (const DecodingError& error) {
    throw DecodingError(error.kind(), error.keyPath(),
                        fileURL.filename().string() + ": " + error.errorDescription());
  }
}

void RawPCMPresetStore::save(std::span<const RawPCMPreset> presets) const {
  makeFolderOf(fileURL);
  writeFileAtomically(fileURL, json::encode(std::vector(presets.begin(), presets.end()), kStyle));
}

void RawPCMPresetStore::update(
    const std::function<void(std::vector<RawPCMPreset>&)>& change) const {
  makeFolderOf(fileURL);
  const auto folder = fileURL.parent_path();
  const FolderLock lock(folder.empty() ? "." : folder);
  auto presets = loadIntact();
  change(presets);
  save(presets);
}

std::optional<RawPCMPreset> RawPCMPresetStore::preset(std::string_view named) const {
  const auto presets = load();
  const auto found = std::find_if(presets.begin(), presets.end(), [&](const RawPCMPreset& each) {
    return areCaselessEqual(each.name, named);
  });
  return found == presets.end() ? std::nullopt : std::optional(*found);
}

}  // namespace orvane
