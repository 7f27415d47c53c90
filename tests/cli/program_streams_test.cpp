// Files with several audio streams: films, and recordings with each channel in a stream of its own.

#include "tests/cli/program_fixture.h"
#include "tests/support/tool_runner.h"

namespace orvane::cli::test {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class ProgramStreams : public ProgramTest {
 protected:
  /// Writes the two channels of a file as streams of their own beside it.
  void SetUp() override {
    const std::string left = sineSamples(48'000 * 4, 0.5, 1);
    const std::string right = sineSamples(48'000 * 4, 0.125, 1);
    std::string both;
    for (std::size_t i = 0; i < left.size(); i += 2) both += left.substr(i, 2) + right.substr(i, 2);
    folder().write("both.wav", waveFile(both));
    folder().write("left.wav", waveFile(left, 1));
    folder().write("right.wav", waveFile(right, 1));
  }
  void combine(const std::string& name, const std::vector<std::string>& inputs,
               const std::string& codec = "pcm_s16le") const {
    std::vector<std::string> arguments = {"-v", "error", "-y"};
    for (const auto& input : inputs)
      arguments.insert(arguments.end(), {"-i", (folder() / input).string()});
    for (std::size_t i = 0; i < inputs.size(); ++i)
      arguments.insert(arguments.end(), {"-map", std::to_string(i) + ":a"});
    arguments.insert(arguments.end(), {"-c:a", codec, (folder() / name).string()});
    orvane::test::runTool("ffmpeg", arguments);
  }
  Json json(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"analyze", "--json"});
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return jsonLines(end.output).at(0);
  }
};

TEST_F(ProgramStreams, JoinsSingleChannelsIntoTheProgrammeThatTheyAre) {
  const Json whole = json({"both.wav"});
  for (const char* name : {"mono.mov", "mono.mkv"}) {
    combine(name, {"left.wav", "right.wav"});
    const Json joined = json({name, "--streams", "0,1"});
    EXPECT_THAT(joined.at("channelLabels"), ElementsAre("L", "R"));
    EXPECT_THAT(joined.at("streams"), ElementsAre(0, 1));
    EXPECT_EQ(joined.at("streamCount"), 2);
    for (const char* key : {"integratedLUFS", "loudnessRange", "truePeakDB", "channelPeakDB",
                            "channelRMSDB", "averageCorrelation", "durationSeconds"})
      EXPECT_EQ(joined.at(key), whole.at(key)) << name << " " << key;
    const Json swapped = json({name, "--streams", "1,0"});
    EXPECT_EQ(swapped.at("channelPeakDB").at(0), whole.at("channelPeakDB").at(1));
  }
}

/// As cameras and broadcasters deliver: a picture, and each channel in a stream of its own.
TEST_F(ProgramStreams, TakesTheChannelsOfFilmsApartAndTogether) {
  const Json whole = json({"both.wav"});
  for (const std::string name : {"film.mxf", "film.mov"}) {
    std::vector<std::string> arguments = {"-v",    "error", "-f",
                                          "lavfi", "-i",    "color=size=64x64:rate=25:duration=4"};
    for (const char* input : {"left.wav", "right.wav", "left.wav", "right.wav"})
      arguments.insert(arguments.end(), {"-i", (folder() / input).string()});
    arguments.insert(arguments.end(),
                     {"-map", "0:v", "-map", "1:a", "-map", "2:a", "-map", "3:a", "-map", "4:a",
                      "-c:v", "mpeg2video", "-c:a", "pcm_s24le", (folder() / name).string()});
    orvane::test::runTool("ffmpeg", arguments);

    const Json document = jsonLines(run({"identify", "--json", name}).output).at(0);
    ASSERT_EQ(document.at("streams").size(), 4U) << name;
    EXPECT_EQ(document.at("containerName"), name == "film.mxf" ? "MXF" : "MOV");
    for (const Json& stream : document.at("streams")) {
      EXPECT_EQ(stream.at("channelCount"), 1);
      EXPECT_EQ(stream.at("encodingName"), "24-bit integer");
      EXPECT_EQ(stream.at("sampleRate"), 48'000);
    }
    EXPECT_THAT(run({"identify", name}).output,
                AllOf(HasSubstr("\n  stream 0 (default)"), HasSubstr("\n  stream 3")));

    const Json joined = json({name, "--streams", "0,1"});
    EXPECT_EQ(joined.at("streamCount"), 4);
    for (const char* key : {"integratedLUFS", "truePeakDB", "channelPeakDB", "durationSeconds"})
      EXPECT_EQ(joined.at(key), whole.at(key)) << name << " " << key;
    const auto each = jsonLines(run({"analyze", "--json", "--streams", "all", name}).output);
    ASSERT_EQ(each.size(), 4U);
    for (std::size_t i = 0; i < each.size(); ++i) {
      EXPECT_THAT(each[i].at("streams"), ElementsAre(i));
      EXPECT_EQ(each[i].at("channelPeakDB").at(0), whole.at("channelPeakDB").at(i % 2));
    }
    EXPECT_THAT(run({"analyze", name}).output, HasSubstr("Audio stream 0 of 4, counted from 0"));
  }
}

TEST_F(ProgramStreams, WeightsJoinedChannelsByTheirLabels) {
  combine("mono.mov", {"left.wav", "right.wav", "left.wav"});
  const double front =
      json({"mono.mov", "--streams", "0,1,2", "--channel-labels", "L,R,C"}).at("integratedLUFS");
  const double rear =
      json({"mono.mov", "--streams", "0,1,2", "--channel-labels", "L,R,Ls"}).at("integratedLUFS");
  const double effects =
      json({"mono.mov", "--streams", "0,1,2", "--channel-labels", "L,R,LFE"}).at("integratedLUFS");
  EXPECT_LT(effects, front);
  EXPECT_LT(front, rear);
  EXPECT_THAT(
      run({"analyze", "mono.mov", "--streams", "0,1,2", "--channel-labels", "Boom,Lav,C"}).errors,
      HasSubstr("must name loudspeakers"));
  EXPECT_THAT(run({"analyze", "mono.mov", "--streams", "0,1,2", "--channel-labels", "L,R"}).errors,
              HasSubstr("3 channels, not 2"));
}

TEST_F(ProgramStreams, MeasuresEachByItself) {
  combine("film.mkv", {"left.wav", "both.wav"});
  const auto lines =
      jsonLines(run({"analyze", "--json", "--streams", "all", "film.mkv", "good.wav"}).output);
  ASSERT_EQ(lines.size(), 3U);
  EXPECT_THAT(lines[0].at("streams"), ElementsAre(0));
  EXPECT_THAT(lines[1].at("streams"), ElementsAre(1));
  EXPECT_EQ(lines[0].at("url"), "film.mkv");
  EXPECT_EQ(lines[0].at("channelCount"), 1);
  EXPECT_EQ(lines[1].at("channelCount"), 2);
  EXPECT_EQ(lines[2].at("streamCount"), 1);
  EXPECT_THAT(run({"analyze", "-q", "--streams", "all", "film.mkv"}).output,
              AllOf(HasSubstr("film.mkv [stream 0]\n"), HasSubstr("film.mkv [stream 1]\n")));
}

TEST_F(ProgramStreams, SaysWhenThereAreSeveral) {
  combine("film.mkv", {"left.wav", "both.wav"});
  EXPECT_THAT(run({"analyze", "film.mkv"}).output, HasSubstr(" of 2, counted from 0; --streams"));
  EXPECT_THAT(run({"analyze", "both.wav"}).output, Not(HasSubstr("Audio stream")));
  const ProgramEnd end = run({"analyze", "film.mkv", "--streams", "0,1"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("Streams 0 and 1 cannot be joined: they differ"));
  EXPECT_EQ(run({"analyze", "film.mkv", "--streams", "0,x"}).exitCode, 2);
  EXPECT_EQ(run({"analyze", "film.mkv", "--streams", "0,1", "--stream", "1"}).exitCode, 2);
}

TEST_F(ProgramStreams, IdentifyListsThemAll) {
  combine("film.mkv", {"left.wav", "both.wav"}, "flac");
  const Json document = jsonLines(run({"identify", "--json", "film.mkv"}).output).at(0);
  ASSERT_EQ(document.at("streams").size(), 2U);
  EXPECT_EQ(document.at("streams").at(0).at("channelCount"), 1);
  EXPECT_EQ(document.at("streams").at(1).at("channelCount"), 2);
  EXPECT_EQ(document.at("streams").at(1).at("encodingName"), "FLAC");
  EXPECT_TRUE(document.at("streamIndex").is_number());
  EXPECT_THAT(run({"identify", "film.mkv"}).output,
              AllOf(HasSubstr("\n  stream 0"), HasSubstr("\n  stream 1")));
  EXPECT_EQ(jsonLines(run({"identify", "--json", "good.wav"}).output).at(0).at("streams").size(),
            1U);
}

TEST_F(ProgramStreams, FillsShorterOnesUpWithSilence) {
  folder().write("short.wav", waveFile(sineSamples(48'000, 0.5, 1), 1));
  combine("mono.mov", {"short.wav", "left.wav"});
  const Json joined = json({"mono.mov", "--streams", "0,1"});
  EXPECT_NEAR(joined.at("durationSeconds"), 4, 1e-9);
  EXPECT_THAT(joined.at("warnings").dump(), HasSubstr("differ in length"));
}

}  // namespace
}  // namespace orvane::cli::test
