#pragma once

#include <optional>
#include <string>

namespace orvane::cli {

/// What the figures that come from a speech model are reported with.
struct SpeechModelName {
  std::string version{};
  std::string sha256{};  ///< of its file, in hexadecimal digits

  bool operator==(const SpeechModelName&) const = default;
};

/// Of the model that is installed; absent when there is none that can be read.
std::optional<SpeechModelName> nameOfSpeechModel();

/// Throws `PlatformError`, whose text tells how to install it, when there is no speech model.
void requireSpeechModel();

}  // namespace orvane::cli
