#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/speech/dialogue/dialogue_region.h"
#include "orvane/text/iso8601_date.h"

namespace orvane {

/// A file's dialogue regions and where they come from: what is kept beside the audio.
struct ORVANE_API DialogueSidecar {
  /// The layout that is written, and the highest one that can be read.
  static constexpr std::int64_t currentSchemaVersion = 1;

  /// What the regions belong to. Whether a file is still that one is for the caller to judge.
  struct AudioFileInfo {
    std::string filename{};      ///< last component of the path
    double durationSeconds = 0;  ///< seconds
    double sampleRate = 0;       ///< Hz

    bool operator==(const AudioFileInfo&) const = default;
  };

  std::int64_t schemaVersion = currentSchemaVersion;
  std::string generator{};  ///< name of the program that wrote it
  std::string generatorVersion{};
  AudioFileInfo audioFile{};
  std::vector<DialogueRegion> regions{};
  Date createdAt{};
  Date modifiedAt{};
  DialogueRegionSource source = DialogueRegionSource::silero;

  DialogueSidecar() = default;
  /// The regions are put in order of their start; those with equal starts keep their order.
  DialogueSidecar(std::int64_t schemaVersion, std::string generator, std::string generatorVersion,
                  AudioFileInfo audioFile, std::vector<DialogueRegion> regions, Date createdAt,
                  Date modifiedAt, DialogueRegionSource source);

  bool operator==(const DialogueSidecar&) const = default;
};

}  // namespace orvane
