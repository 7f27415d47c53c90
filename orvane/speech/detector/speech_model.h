#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "orvane/platform/export.h"

namespace orvane {

/// The model that the speech detector loads, among the library's resources.
struct ORVANE_API SpeechModel {
  std::filesystem::path path{};
  std::string version{};  ///< of the network, as the file's name tells it: "6"

  bool operator==(const SpeechModel&) const = default;

  /// The one that is used, whichever of its names it has; absent when there is none. Only looks for
  /// the file, which is quick.
  static std::optional<SpeechModel> installed();

  /// SHA-256 of the file in hexadecimal digits. Throws `PlatformError`.
  std::string hash() const;
};

}  // namespace orvane
