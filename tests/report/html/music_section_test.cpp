#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "orvane/report/html/html_report_builder.h"

namespace orvane {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* kWarning = "<div class=\"music-warning\">No key was detected";

std::string page(const MusicAnalysisResult& analysis) {
  return HTMLReportBuilder::build({.musicAnalysis = analysis});
}

TEST(MusicSection, TellsKeyTempoAndStructure) {
  const std::string html = page({.beats = {1, 2, 3, 4},
                                 .bars = {1, 3},
                                 .beatsPerMinute = 119.96F,
                                 .sections = {{0, 1}},
                                 .segments = {{0, 1}, {1, 2}},
                                 .keys = {{.span = {0, 9}, .tonic = "fSharp", .mode = "minor"}}});
  EXPECT_THAT(html, HasSubstr("<div class=\"section-title\">Music (Apple Music Understanding)</div>"
                              "\n<div class=\"chap-meta\">Key: <b>F\u266F minor</b> · Tempo: "
                              "<b>120.0 BPM</b> · Bars: 2 · Beats: 4 · Sections: 1 · Segments: 2 · "
                              "Phrases: 0</div>\n"));
  EXPECT_THAT(html, Not(HasSubstr(kWarning)));
}

TEST(MusicSection, WarnsWhenNoKeyWasFound) {
  const std::string html = page({});
  EXPECT_THAT(html, HasSubstr("Key: <b>not detected</b> · Tempo: <b>-</b>"));
  EXPECT_THAT(html,
              HasSubstr("No key was detected, so the file reads as non-music to the model. "
                        "Tempo, bars, and structure are not reliable on speech or non-musical "
                        "material.</div>"));
}

TEST(MusicSection, ListsTheStemsInTheirOrder) {
  using Stem = MusicAnalysisResult::Stem;
  const std::string html = page({.duration = 60,
                                 .stems = {{.stem = Stem::bass, .ranges = {{0, 60}}},
                                           {.stem = Stem::vocal, .ranges = {{0, 10}, {20, 30}}}}});
  EXPECT_THAT(html, HasSubstr("<tr><th>Stem</th><th>Presence</th><th>Spans</th></tr>\n"
                              "<tr><td class=\"ch-label\">Vocal</td><td>33%</td><td>2</td></tr>\n"
                              "<tr><td class=\"ch-label\">Drums</td><td>0%</td><td>0</td></tr>\n"
                              "<tr><td class=\"ch-label\">Bass</td><td>100%</td><td>1</td></tr>\n"
                              "<tr><td class=\"ch-label\">Other</td><td>0%</td><td>0</td></tr>\n"));
}

TEST(MusicSection, TellsTheStemGatedLoudness) {
  const StemGatedLoudness gated{
      .vocal = {.presentLUFS = -13.25F, .absentLUFS = -12.5F, .balanceLU = -0.75F},
      .drums = {.presentLUFS = -13, .absentLUFS = -15, .balanceLU = 2}};
  EXPECT_THAT(HTMLReportBuilder::build({.stemGatedLoudness = gated}),
              HasSubstr("<div class=\"chap-meta\">Stem-gated loudness (Orvane BS.1770-4): vocal "
                        "present <b>-13.2 LUFS</b> · bed (no vocal) <b>-12.5 LUFS</b> · vocal "
                        "balance <b>-0.8 LU</b> · drums present -13.0 LUFS · no drums -15.0 LUFS · "
                        "drums balance +2.0 LU</div>"));
}

TEST(MusicSection, ShowsADashForLoudnessThatIsAbsentOrNotFinite) {
  const StemGatedLoudness gated{.vocal = {.presentLUFS = -std::numeric_limits<float>::infinity()}};
  EXPECT_THAT(HTMLReportBuilder::build({.stemGatedLoudness = gated}),
              HasSubstr("vocal present <b>-</b> · bed (no vocal) <b>-</b> · vocal balance <b>-</b> "
                        "· drums present - · no drums - · drums balance -</div>"));
}

TEST(MusicSection, NamesItsSource) {
  const std::string rest =
      ". Stems, tempo, key, and structure are Apple's on-device analysis; the loudness figures in "
      "this report are Orvane's own BS.1770-4 measurement.</p>";
  EXPECT_THAT(page({.source = "<Model> 2"}),
              HasSubstr("<p class=\"note\">Source: &lt;Model&gt; 2" + rest));
  EXPECT_THAT(HTMLReportBuilder::build({.stemGatedLoudness = StemGatedLoudness{.source = "S"}}),
              HasSubstr("<p class=\"note\">Source: S" + rest));
}

TEST(MusicSection, IsLeftOutWithoutMusic) {
  EXPECT_THAT(HTMLReportBuilder::build({}), Not(HasSubstr("Music (Apple")));
}

}  // namespace
}  // namespace orvane
