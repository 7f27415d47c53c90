#pragma once

#include "orvane/music/music_analysis_result.h"
#include "orvane/music/music_section_loudness.h"
#include "orvane/music/stem_gated_loudness.h"
#include "orvane/text/json/json_coding.h"

// JSON forms of the musical records.
namespace orvane::json {

template <>
struct Coding<MusicAnalysisResult::Stem> {
  static std::string_view text(MusicAnalysisResult::Stem stem) { return rawValue(stem); }
  static std::optional<MusicAnalysisResult::Stem> value(std::string_view text) {
    return stemFromRawValue(text);
  }
};

template <>
struct Coding<MusicAnalysisResult::TimeSpan> {
  using Record = MusicAnalysisResult::TimeSpan;
  static constexpr std::tuple fields{Field{"start", &Record::start}, Field{"end", &Record::end}};
};

template <>
struct Coding<MusicAnalysisResult::ActivityPoint> {
  using Record = MusicAnalysisResult::ActivityPoint;
  static constexpr std::tuple fields{Field{"time", &Record::time}, Field{"value", &Record::value}};
};

template <>
struct Coding<MusicAnalysisResult::StemLane> {
  using Record = MusicAnalysisResult::StemLane;
  static constexpr std::tuple fields{Field{"stem", &Record::stem}, Field{"ranges", &Record::ranges},
                                     Field{"activity", &Record::activity}};
};

template <>
struct Coding<MusicAnalysisResult::KeyRange> {
  using Record = MusicAnalysisResult::KeyRange;
  static constexpr std::tuple fields{Field{"span", &Record::span}, Field{"tonic", &Record::tonic},
                                     Field{"mode", &Record::mode}};
};

template <>
struct Coding<MusicAnalysisResult::PaceRange> {
  using Record = MusicAnalysisResult::PaceRange;
  static constexpr std::tuple fields{Field{"span", &Record::span}, Field{"value", &Record::value}};
};

template <>
struct Coding<MusicAnalysisResult> {
  using Record = MusicAnalysisResult;
  static constexpr std::tuple fields{Field{"source", &Record::source},
                                     Field{"analysedAt", &Record::analysedAt},
                                     Field{"duration", &Record::duration},
                                     Field{"stems", &Record::stems},
                                     Field{"beats", &Record::beats},
                                     Field{"bars", &Record::bars},
                                     Field{"beatsPerMinute", &Record::beatsPerMinute},
                                     Field{"sections", &Record::sections},
                                     Field{"segments", &Record::segments},
                                     Field{"phrases", &Record::phrases},
                                     Field{"keys", &Record::keys},
                                     Field{"paces", &Record::paces}};
};

template <>
struct Coding<StemGatedLoudness::Pair> {
  using Record = StemGatedLoudness::Pair;
  static constexpr std::tuple fields{
      Field{"presentLUFS", &Record::presentLUFS}, Field{"absentLUFS", &Record::absentLUFS},
      Field{"balanceLU", &Record::balanceLU}, Field{"presentSeconds", &Record::presentSeconds},
      Field{"absentSeconds", &Record::absentSeconds}};
};

template <>
struct Coding<StemGatedLoudness> {
  using Record = StemGatedLoudness;
  static constexpr std::tuple fields{Field{"vocal", &Record::vocal}, Field{"drums", &Record::drums},
                                     Field{"source", &Record::source}};
};

template <>
struct Coding<MusicSectionLoudness::Entry> {
  using Record = MusicSectionLoudness::Entry;
  static constexpr std::tuple fields{Field{"index", &Record::index}, Field{"span", &Record::span},
                                     Field{"integratedLUFS", &Record::integratedLUFS},
                                     Field{"deviationLU", &Record::deviationLU}};
};

template <>
struct Coding<MusicSectionLoudness> {
  using Record = MusicSectionLoudness;
  static constexpr std::tuple fields{Field{"entries", &Record::entries},
                                     Field{"medianLUFS", &Record::medianLUFS}};
};

}  // namespace orvane::json
