#pragma once

#include <functional>
#include <string>

#include "orvane/platform/export.h"
#include "orvane/platform/uuid.h"
#include "orvane/rawpcm/raw_pcm_format.h"

namespace orvane {

/// A declaration of headerless PCM that the user has given a name. Has a JSON form; all three keys
/// are required.
struct ORVANE_API RawPCMPreset {
  UUID id{};  ///< stays the same when the name or the format changes
  std::string name{};
  RawPCMFormat format{};  ///< as declared, whether or not any file can have it

  bool operator==(const RawPCMPreset&) const = default;
};

}  // namespace orvane

template <>
struct std::hash<orvane::RawPCMPreset> {
  std::size_t operator()(const orvane::RawPCMPreset& preset) const noexcept {
    return std::hash<orvane::UUID>{}(preset.id) ^ 3 * std::hash<std::string>{}(preset.name) ^
           7 * std::hash<orvane::RawPCMFormat>{}(preset.format);
  }
};
