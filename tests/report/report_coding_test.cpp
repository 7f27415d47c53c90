#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "orvane/report/orvane_report.h"
#include "tests/report/sample_reports.h"
#include "tests/support/doubled_keys.h"

namespace orvane {
namespace {

using Json = nlohmann::ordered_json;
using testing::ElementsAre;

std::vector<std::string> keys(const Json& object) {
  std::vector<std::string> result;
  for (const auto& [key, value] : object.items()) result.push_back(key);
  return result;
}

TEST(ReportCoding, RefusesAKeyThatStandsThereTwiceInAnyRecord) {
  OrvaneReport report = test::fullReport();
  const auto shorten = [](auto& loudness) {
    for (auto* curve :
         {&loudness.momentaryCurve, &loudness.shortTermCurve, &loudness.integratedCurve})
      curve->resize(1);
  };
  shorten(report.fullFile);
  shorten(*report.selection);
  report.stereoWidth->curve.resize(1);
  test::expectEachKeyOnce(encodeJSON(report), decodeJSON<OrvaneReport>);
  test::expectEachKeyOnce(encodeJSON(LoudnessCurvePoint{}), decodeJSON<LoudnessCurvePoint>);
  test::expectEachKeyOnce(encodeJSON(StereoWidthCurvePoint{}), decodeJSON<StereoWidthCurvePoint>);
}

Json fullReport() {
  return Json::parse(encodeJSON(test::fullReport()));
}

TEST(ReportCoding, WritesTheKeysOfEveryRecordInItsOrder) {
  const Json report = fullReport();
  EXPECT_THAT(keys(report),
              ElementsAre("generatedAt", "appVersion", "file", "fullFile", "selection",
                          "stereoWidth", "channels", "violations", "loudnessTargets", "chapters",
                          "musicAnalysis", "stemGatedLoudness"));
  EXPECT_THAT(keys(report["file"]),
              ElementsAre("fileName", "filePath", "fileFormat", "fileSize", "duration",
                          "sampleRate", "channelCount", "channelLayout", "bitDepth", "rawFormat"));
  EXPECT_THAT(keys(report["file"]["rawFormat"]),
              ElementsAre("sampleRate", "channelCount", "encoding", "endianness", "isPlanar",
                          "headerSkipBytes", "trailingBytesTolerance"));
  EXPECT_THAT(
      keys(report["fullFile"]),
      ElementsAre("integratedLUFS", "samplePeakDB", "truePeakDB", "loudnessRange",
                  "maxMomentaryLUFS", "maxShortTermLUFS", "dynamicRange", "speechGatedLUFS",
                  "speechPercentage", "momentaryCurve", "shortTermCurve", "integratedCurve"));
  EXPECT_THAT(keys(report["fullFile"]["momentaryCurve"][0]), ElementsAre("time", "lufs"));
  EXPECT_THAT(
      keys(report["selection"]),
      ElementsAre("startTime", "endTime", "integratedLUFS", "loudnessRange", "truePeakDB",
                  "samplePeakDB", "headroomDB", "dynamicRange", "speechGatedLUFS",
                  "speechPercentage", "speechGatedNoiseFloorDBRMS", "maxMomentaryLUFS",
                  "maxShortTermLUFS", "momentaryCurve", "shortTermCurve", "integratedCurve"));
  EXPECT_THAT(keys(report["stereoWidth"]),
              ElementsAre("curve", "averageCorrelation", "monoPercent", "narrowPercent",
                          "stereoPercent", "widePercent", "outOfPhasePercent"));
  EXPECT_THAT(keys(report["stereoWidth"]["curve"][0]), ElementsAre("time", "correlation"));
  EXPECT_THAT(keys(report["channels"][0]), ElementsAre("index", "label", "peakDB", "rmsDB",
                                                       "crestFactorDB", "dcOffset", "hasClipping"));
}

TEST(ReportCoding, WritesTheKeysOfTheOtherRecordsInTheirOrder) {
  const Json report = fullReport();
  EXPECT_THAT(keys(report["violations"]),
              ElementsAre("momentaryThreshold", "shortTermThreshold", "momentaryCount",
                          "shortTermCount", "momentaryRanges", "shortTermRanges"));
  EXPECT_THAT(keys(report["violations"]["momentaryRanges"][0]), ElementsAre("start", "end"));
  EXPECT_THAT(keys(report["loudnessTargets"]),
              ElementsAre("activeMode", "targets", "programRMSDBFS"));
  EXPECT_THAT(keys(report["chapters"]),
              ElementsAre("medianLUFS", "deviationThresholdLU", "origin", "entries"));
  EXPECT_THAT(keys(report["chapters"]["entries"][0]),
              ElementsAre("index", "name", "startSec", "endSec", "integratedLUFS", "rmsDBFS",
                          "deviationFromMedianLU", "truePeakDBTP", "samplePeakDBFS",
                          "loudnessRange", "maxMomentaryLUFS", "maxShortTermLUFS",
                          "speechGatedLUFS", "noiseFloorDBRMS", "speechPercentage"));
  EXPECT_THAT(keys(report["stemGatedLoudness"]), ElementsAre("vocal", "drums", "source"));
}

TEST(ReportCoding, WritesTheKeysOfATargetAndItsVerdictInTheirOrder) {
  const ReportLoudnessTargetItem item{
      .toleranceLU = 1.0F,
      .boostBehaviour = "symmetric",
      .noiseFloorMaxDBRMS = -60.0F,
      .maxShortTermLUFS = -18.0F,
      .verdict = ReportTargetVerdict{.penaltyGainDB = 1.0F,
                                     .penaltyApplies = true,
                                     .truePeakClean = false,
                                     .nonComplianceReason = "loudness",
                                     .nonComplianceActual = -10.0F,
                                     .nonComplianceLimit = -12.0F}};
  const Json json = Json::parse(encodeJSON(item));
  EXPECT_THAT(keys(json),
              ElementsAre("id", "name", "mode", "source", "treatmentKind", "referenceLUFS",
                          "toleranceLU", "truePeakCeilingDBTP", "boostBehaviour",
                          "noiseFloorMaxDBRMS", "maxShortTermLUFS", "verdict"));
  EXPECT_THAT(
      keys(json["verdict"]),
      ElementsAre("status", "actualLUFS", "penaltyGainDB", "penaltyApplies", "truePeakClean",
                  "nonComplianceReason", "nonComplianceActual", "nonComplianceLimit"));
}

TEST(ReportCoding, LeavesOutWhatAnEmptyReportDoesNotHave) {
  using namespace std::chrono;
  const OrvaneReport report{.generatedAt = sys_days(2026y / January / 5) + 9h};
  EXPECT_EQ(encodeJSON(report),
            R"({"generatedAt":"2026-01-05T09:00:00Z","appVersion":"","file":{"fileName":"",)"
            R"("filePath":"","fileFormat":"","fileSize":0,"duration":0,"sampleRate":0,)"
            R"("channelCount":0,"channelLayout":"","bitDepth":0},"fullFile":{"momentaryCurve":[],)"
            R"("shortTermCurve":[],"integratedCurve":[]},"channels":[],)"
            R"("loudnessTargets":{"activeMode":"","targets":[]}})");
}

TEST(ReportCoding, WritesAnEmptyListOfChannelsWhenTheyAreNotAskedFor) {
  ReportInputs inputs{.fileInfo = {.channelCount = 1}, .fileChannelPeakDB = {-1}};
  const std::string text = encodeJSON(OrvaneReport::build(inputs, {.includeChannels = false}));
  EXPECT_NE(text.find("\"channels\":[]"), std::string::npos);
}

TEST(ReportCoding, BringsEveryRecordBack) {
  for (const auto& [name, report] : test::sampleReports())
    EXPECT_EQ(decodeJSON<OrvaneReport>(encodeJSON(report)), report) << name;
}

TEST(ReportCoding, WritesThePointsThatAReportIsBuiltFrom) {
  const LoudnessCurvePoint loudness{0.1, -20, -21, -22.5F};
  EXPECT_EQ(encodeJSON(loudness),
            R"({"time":0.1,"momentary":-20,"shortTerm":-21,"integrated":-22.5})");
  EXPECT_EQ(decodeJSON<LoudnessCurvePoint>(encodeJSON(loudness)), loudness);
  const StereoWidthCurvePoint width{0.2, 0.3F};
  EXPECT_EQ(encodeJSON(width), R"({"time":0.2,"correlation":0.3})");
  EXPECT_EQ(decodeJSON<StereoWidthCurvePoint>(encodeJSON(width)), width);
}

TEST(ReportCoding, NeverWritesInfinityOrNaN) {
  const std::string text = encodeJSON(test::silentFileReport());
  EXPECT_EQ(text.find("inf"), std::string::npos);
  EXPECT_EQ(text.find("nan"), std::string::npos);
  EXPECT_NE(text.find("\"lufs\":null"), std::string::npos);
}

TEST(ReportCoding, WritesNullForLevelsOfASilentSelectionAndReadsMinusInfinity) {
  constexpr float kSilence = -std::numeric_limits<float>::infinity();
  const ReportSelectionLoudness silent{.integratedLUFS = kSilence, .truePeakDB = kSilence};
  const std::string text = encodeJSON(silent);
  EXPECT_NE(text.find("\"integratedLUFS\":null"), std::string::npos);
  EXPECT_EQ(decodeJSON<ReportSelectionLoudness>(text), silent);
}

// A silent chapter came back as one that was never measured.
TEST(ReportCoding, TellsASilentChapterFromAnUnmeasuredOne) {
  constexpr float kSilence = -std::numeric_limits<float>::infinity();
  const ReportChapterEntry silent{.integratedLUFS = kSilence, .rmsDBFS = -120.0F};
  EXPECT_EQ(
      encodeJSON(silent),
      R"({"index":0,"name":"","startSec":0,"endSec":0,"integratedLUFS":null,"rmsDBFS":-120})");
  EXPECT_EQ(decodeJSON<ReportChapterEntry>(encodeJSON(silent)), silent);
  EXPECT_EQ(decodeJSON<ReportChapterEntry>(encodeJSON(ReportChapterEntry{})), ReportChapterEntry{});
  // Nobody else's figures are null.
  const ReportFullFileLoudness file{.integratedLUFS = kSilence};
  EXPECT_EQ(encodeJSON(file).find("null"), std::string::npos);
}

TEST(ReportCoding, RequiresEveryKeyThatIsNotOptional) {
  const Json complete = fullReport();
  for (const char* key :
       {"generatedAt", "appVersion", "file", "fullFile", "channels", "loudnessTargets"}) {
    Json report = complete;
    report.erase(key);
    try {
      decodeJSON<OrvaneReport>(report.dump());
      ADD_FAILURE() << key;
    } catch (const DecodingError& error) {
      EXPECT_EQ(error.kind(), DecodingError::Case::keyNotFound);
      EXPECT_EQ(error.keyPath(), key);
    }
  }
  for (const char* key : {"selection", "stereoWidth", "violations", "chapters", "musicAnalysis",
                          "stemGatedLoudness"}) {
    Json report = complete;
    report.erase(key);
    EXPECT_NO_THROW(decodeJSON<OrvaneReport>(report.dump())) << key;
  }
}

TEST(ReportCoding, NamesThePlaceOfAValueOfAnotherType) {
  Json report = fullReport();
  report["chapters"]["entries"][1]["name"] = 7;
  try {
    decodeJSON<OrvaneReport>(report.dump());
    FAIL();
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Case::typeMismatch);
    EXPECT_EQ(error.keyPath(), "chapters.entries[1].name");
    EXPECT_EQ(error.errorDescription(), "\"chapters.entries[1].name\" is a number, not a string.");
  }
}

TEST(ReportCoding, RefusesADateOfAnotherForm) {
  Json report = fullReport();
  report["generatedAt"] = "5 January 2026";
  try {
    decodeJSON<OrvaneReport>(report.dump());
    FAIL();
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.errorDescription(),
              "\"generatedAt\" is no date of the form 2024-01-31T12:00:00Z.");
  }
}

}  // namespace
}  // namespace orvane
