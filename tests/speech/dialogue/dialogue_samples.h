#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "orvane/speech/dialogue/dialogue_sidecar.h"

namespace orvane::test {

inline DialogueSidecar sidecarWith(std::vector<DialogueRegion> regions) {
  return {DialogueSidecar::currentSchemaVersion,
          "Orvane",
          "0.1.0",
          {.filename = "take1.wav", .durationSeconds = 12.5, .sampleRate = 48000},
          std::move(regions),
          Date{std::chrono::seconds(1709251199)},
          Date{std::chrono::seconds(1709251200)},
          DialogueRegionSource::userEdited};
}

/// One pristine, one changed and labelled, one drawn region.
inline DialogueSidecar sampleSidecar() {
  return sidecarWith(
      {{*UUID::parse("123E4567-E89B-42D3-A456-426614174000"), 0.1, 0.30000000000000004,
        std::nullopt, ClosedTimeRange{0.1, 0.30000000000000004}},
       {*UUID::parse("123E4567-E89B-42D3-A456-426614174001"), 1.25, 2, "Anna, \"off\" \n\u00E9",
        ClosedTimeRange{1, 2}},
       {*UUID::parse("123E4567-E89B-42D3-A456-426614174002"), 3, 4, ""}});
}

}  // namespace orvane::test
