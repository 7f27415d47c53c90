#pragma once

#include "orvane/speech/dialogue/dialogue_sidecar.h"
#include "orvane/text/json/json_coding.h"

// JSON forms of dialogue regions and their sidecar.
namespace orvane::json {

template <>
struct Coding<ClosedTimeRange> {
  static constexpr std::pair bounds{&ClosedTimeRange::lowerBound, &ClosedTimeRange::upperBound};
};

template <>
struct Coding<DialogueRegion> {
  using Record = DialogueRegion;
  static constexpr std::tuple fields{Field{"id", &Record::id}, Field{"start", &Record::start},
                                     Field{"end", &Record::end}, Field{"label", &Record::label},
                                     Field{"vadOrigin", &Record::vadOrigin}};
};

template <>
struct Coding<DialogueRegionSource> {
  static std::string_view text(DialogueRegionSource source) { return rawValue(source); }
  static std::optional<DialogueRegionSource> value(std::string_view text) {
    return dialogueRegionSourceFromRawValue(text);
  }
  static constexpr const char* unknown = "is none of \"silero\", \"user-edited\" and \"imported\".";
};

template <>
struct Coding<DialogueSidecar::AudioFileInfo> {
  using Record = DialogueSidecar::AudioFileInfo;
  static constexpr std::tuple fields{Field{"filename", &Record::filename},
                                     Field{"durationSeconds", &Record::durationSeconds},
                                     Field{"sampleRate", &Record::sampleRate}};
};

template <>
struct Coding<DialogueSidecar> {
  using Record = DialogueSidecar;
  static constexpr std::tuple fields{Field{"schemaVersion", &Record::schemaVersion},
                                     Field{"generator", &Record::generator},
                                     Field{"generatorVersion", &Record::generatorVersion},
                                     Field{"audioFile", &Record::audioFile},
                                     Field{"regions", &Record::regions},
                                     Field{"createdAt", &Record::createdAt},
                                     Field{"modifiedAt", &Record::modifiedAt},
                                     Field{"source", &Record::source}};
};

}  // namespace orvane::json
