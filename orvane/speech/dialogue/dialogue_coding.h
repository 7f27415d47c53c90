#pragma once

#include "orvane/speech/dialogue/dialogue_sidecar.h"
#include "orvane/text/json/json_coding.h"

// JSON forms of dialogue regions and their sidecar.
namespace orvane::json {

template <>
struct Coding<ClosedTimeRange> {
  static constexpr std::pair bounds{&ClosedTimeRange::lowerBound, &ClosedTimeRange::upperBound};
};

ORVANE_JSON_FIELDS(DialogueRegion, id, start, end, label, vadOrigin);

template <>
struct Coding<DialogueRegionSource> {
  static constexpr auto value = dialogueRegionSourceFromRawValue;
  static constexpr const char* unknown = "is none of \"silero\", \"user-edited\" and \"imported\".";
};

ORVANE_JSON_FIELDS(DialogueSidecar::AudioFileInfo, filename, durationSeconds, sampleRate);

ORVANE_JSON_FIELDS(DialogueSidecar, schemaVersion, generator, generatorVersion, audioFile, regions,
                   createdAt, modifiedAt, source);

}  // namespace orvane::json
