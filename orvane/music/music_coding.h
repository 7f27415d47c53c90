#pragma once

#include "orvane/music/music_analysis_result.h"
#include "orvane/music/music_auto_analysis_policy.h"
#include "orvane/music/music_grid_snap.h"
#include "orvane/music/music_section_loudness.h"
#include "orvane/music/stem_gated_loudness.h"
#include "orvane/text/json/json_coding.h"

// JSON forms of the musical records.
namespace orvane::json {

template <>
struct Coding<MusicAnalysisResult::Stem> {
  static constexpr auto value = stemFromRawValue;
};

template <>
struct Coding<MusicGridSnap::Mode> {
  static constexpr auto value = MusicGridSnap::modeFromRawValue;
};

template <>
struct Coding<MusicAutoAnalysisPolicy> {
  static constexpr auto value = musicAutoAnalysisPolicyFromRawValue;
};

ORVANE_JSON_FIELDS(MusicAnalysisResult::TimeSpan, start, end);

ORVANE_JSON_FIELDS(MusicAnalysisResult::ActivityPoint, time, value);

ORVANE_JSON_FIELDS(MusicAnalysisResult::StemLane, stem, ranges, activity);

ORVANE_JSON_FIELDS(MusicAnalysisResult::KeyRange, span, tonic, mode);

ORVANE_JSON_FIELDS(MusicAnalysisResult::PaceRange, span, value);

ORVANE_JSON_FIELDS(MusicAnalysisResult, source, analysedAt, duration, stems, beats, bars,
                   beatsPerMinute, sections, segments, phrases, keys, paces);

ORVANE_JSON_FIELDS(StemGatedLoudness::Pair, presentLUFS, absentLUFS, balanceLU, presentSeconds,
                   absentSeconds);

ORVANE_JSON_FIELDS(StemGatedLoudness, vocal, drums, source);

ORVANE_JSON_FIELDS(MusicSectionLoudness::Entry, index, span, integratedLUFS, deviationLU);

ORVANE_JSON_FIELDS(MusicSectionLoudness, entries, medianLUFS);

}  // namespace orvane::json
