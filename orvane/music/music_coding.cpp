#include "orvane/music/music_coding.h"

namespace orvane {

ORVANE_JSON_FORM(MusicAnalysisResult::TimeSpan);
ORVANE_JSON_FORM(MusicAnalysisResult::ActivityPoint);
ORVANE_JSON_FORM(MusicAnalysisResult::StemLane);
ORVANE_JSON_FORM(MusicAnalysisResult::KeyRange);
ORVANE_JSON_FORM(MusicAnalysisResult::PaceRange);
ORVANE_JSON_FORM(MusicAnalysisResult);
ORVANE_JSON_FORM(MusicAutoAnalysisPolicy);
ORVANE_JSON_FORM(MusicGridSnap::Mode);
ORVANE_JSON_FORM(StemGatedLoudness::Pair);
ORVANE_JSON_FORM(StemGatedLoudness);
ORVANE_JSON_FORM(MusicSectionLoudness::Entry);
ORVANE_JSON_FORM(MusicSectionLoudness);

}  // namespace orvane
