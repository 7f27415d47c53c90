#include "cli/output/analysis_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "cli/output/json_output.h"
#include "tests/cli/output/sample_measurement.h"

namespace orvane::cli {
namespace {

using Json = nlohmann::ordered_json;

TEST(AnalysisJson, HasEveryFigureUnderTheNameOfItsField) {
  const std::string line = analysisJson(test::sampleMeasurement(), false);
  const std::string version = Json::parse(line).at("appVersion");
  EXPECT_EQ(
      line,
      R"({"schemaVersion":1,"url":"folder/song.wav","appVersion":")" + version +
          R"(","sampleRate":48000.0,"channelCount":2,)"
          R"("channelLabels":["L","R"],"durationSeconds":61.5,"streamCount":1,"fileFormat":"WAV",)"
          R"("encodingName":"24-bit integer","fileSize":17712044,"bitDepth":24,)"
          R"("dualMono":false,"integratedLUFS":-14.04,"loudnessRange":6.3,"truePeakDB":-0.95,)"
          R"("samplePeakDB":-1.1,"maxMomentaryLUFS":-9.2,"maxShortTermLUFS":-11.7,)"
          R"("dynamicRange":9,"speechGatedLUFS":null,"speechPercentage":null,)"
          R"("averageCorrelation":-0.25,"lowestCorrelation":-0.25,)"
          R"("channelPeakDB":[-1.1,-2.1],"channelRMSDB":[-18.25,-19.25],)"
          R"("channelCrestFactorDB":[17.15,17.15],"channelDCOffset":[0.00012,-0.00034],)"
          R"("channelHasClipping":[false,false],"clippingRunCount":0,"clippingRuns":[],)"
          R"("nonFiniteSampleCount":0,"headSilenceSeconds":0.0,"tailSilenceSeconds":0.0,)"
          R"("longestGapSeconds":0.0,"silentChannels":[],"identicalChannels":[],)"
          R"("invertedChannels":[],"warnings":[],"notes":[]})"
          "\n");
}

TEST(AnalysisJson, HasTheCurvesOnRequest) {
  MeasuredFile file = test::sampleMeasurement();
  file.result.speechHistory = std::vector<bool>{true, false};
  const Json document = Json::parse(analysisJson(file, true));
  EXPECT_EQ(document["loudnessCurve"].dump(),
            R"([{"time":0.1,"momentary":null,"shortTerm":-70.5,"integrated":-70.1},)"
            R"({"time":0.2,"momentary":-20.25,"shortTerm":-21.5,"integrated":-22.1}])");
  EXPECT_EQ(document["stereoWidthCurve"].dump(),
            R"([{"time":0.1,"correlation":0.5},{"time":0.2,"correlation":-0.25}])");
  EXPECT_EQ(document["speechHistory"].dump(), "[true,false]");
  EXPECT_FALSE(Json::parse(analysisJson(file, false)).contains("loudnessCurve"));
}

TEST(AnalysisJson, WritesNullForWhatIsNotFinite) {
  MeasuredFile file = test::sampleMeasurement();
  file.result.integratedLUFS = -std::numeric_limits<float>::infinity();
  file.result.truePeakDB = std::numeric_limits<float>::quiet_NaN();
  file.result.channelPeakDB[1] = std::numeric_limits<float>::infinity();
  const Json document = Json::parse(analysisJson(file, false));
  EXPECT_TRUE(document["integratedLUFS"].is_null());
  EXPECT_TRUE(document["truePeakDB"].is_null());
  EXPECT_TRUE(document["channelPeakDB"][1].is_null());
}

TEST(AnalysisJson, ListsClippingRunsAndWarnings) {
  MeasuredFile file = test::sampleMeasurement();
  file.detail.clippingRuns = {{1, 24'000, 5}};
  file.detail.clippingRunCount = 1;
  file.detail.nonFiniteSampleCount = 3;
  file.detail.warnings = {{AudioFileWarning::Code::openDataSize, "The size is open."}};
  const Json document = Json::parse(analysisJson(file, false));
  EXPECT_EQ(document["clippingRuns"].dump(),
            R"([{"channel":1,"startFrame":24000,"frameCount":5,"startSeconds":0.5}])");
  EXPECT_EQ(document["clippingRunCount"], 1);
  EXPECT_EQ(document["nonFiniteSampleCount"], 3);
  EXPECT_EQ(document["warnings"].dump(), R"([{"code":"openDataSize","text":"The size is open."}])");
}

TEST(AnalysisJson, TellsTheDeclaredFormatOfHeaderlessAudio) {
  MeasuredFile file = test::sampleMeasurement();
  file.identity.reset();
  file.result.rawFormat = RawPCMFormat{.sampleRate = 44100,
                                       .channelCount = 2,
                                       .encoding = RawPCMFormat::Encoding::int24In32,
                                       .endianness = RawPCMFormat::Endianness::big,
                                       .isPlanar = true,
                                       .headerSkipBytes = 7,
                                       .trailingBytesTolerance = 1};
  const Json document = Json::parse(analysisJson(file, false));
  EXPECT_EQ(document["rawFormat"].dump(),
            R"({"sampleRate":44100.0,"channelCount":2,"encoding":"int24In32","endianness":"big",)"
            R"("isPlanar":true,"headerSkipBytes":7,"trailingBytesTolerance":1})");
  EXPECT_FALSE(document.contains("encodingName"));
}

TEST(JsonOutput, IsAsciiInOneLineWhateverTheNames) {
  EXPECT_EQ(JsonOutput::failure("a\nb\x1B\"\u202Ec\xFF.wav", "Ünreadable"),
            R"({"schemaVersion":1,"url":"a\nb\u001b\"\u202ec\ufffd.wav",)"
            R"("urlPercentEncoded":"a%0Ab%1B%22%E2%80%AEc%FF.wav","error":"\u00dcnreadable"})"
            "\n");
}

TEST(JsonOutput, WritesNumbersWithTheirShortestDigits) {
  JsonOutput::Document document;
  document.add("floats", std::vector<float>{0.1F, -23.000002F, std::nanf(""), 2});
  document.add("doubles",
               std::vector<double>{0.1, 1.0 / 3, -std::numeric_limits<double>::infinity(), 48000});
  document.add("integer", 7);
  EXPECT_EQ(document.takeLine(), R"({"schemaVersion":1,"floats":[0.1,-23.000002,null,2.0],)"
                                 R"("doubles":[0.1,0.3333333333333333,null,48000.0],"integer":7})"
                                 "\n");
}

}  // namespace
}  // namespace orvane::cli
