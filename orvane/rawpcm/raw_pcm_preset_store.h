#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/rawpcm/raw_pcm_preset.h"

namespace orvane {

/// Keeps a list of presets in one JSON file, which is read and written as a whole: an array in the
/// order of the list, pretty-printed, keys sorted.
struct ORVANE_API RawPCMPresetStore {
  static constexpr const char* fileName = "raw-pcm-presets.json";

  /// The folder "Orvane" among the user's application data: in `$XDG_DATA_HOME`, else in
  /// "~/.local/share".
  static std::filesystem::path defaultDirectory();

  std::filesystem::path fileURL{};

  explicit RawPCMPresetStore(const std::filesystem::path& directory);

  bool operator==(const RawPCMPresetStore&) const = default;

  /// The list in its order; empty when there is no file or it cannot be read as one, for a single
  /// preset that cannot be read too.
  std::vector<RawPCMPreset> load() const;

  /// The same, but throws `PlatformError` and `DecodingError` (naming file and key) for a file that
  /// is there and cannot be read. An absent file is an empty list.
  std::vector<RawPCMPreset> loadIntact() const;

  /// Replaces the file whole or, when anything fails, not at all, and makes the folder if need be.
  /// Throws `EncodingError` for a rate that is not finite, and `PlatformError`.
  void save(std::span<const RawPCMPreset> presets) const;

  /// Lets `change` edit the list and saves it. Others that do so meanwhile, anywhere on this
  /// machine, wait for their turn, so that no change is lost. Throws what `loadIntact`, `save` and
  /// `change` do, and leaves the file alone then; and `PlatformError` after ten seconds of waiting.
  void update(const std::function<void(std::vector<RawPCMPreset>&)>& change) const;

  /// The first preset of that name, in any case of letters (`areCaselessEqual`); absent without
  /// one. Reads as `load` does.
  std::optional<RawPCMPreset> preset(std::string_view named) const;
};

}  // namespace orvane
