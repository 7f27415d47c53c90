#include "tests/cli/program_fixture.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

class ProgramFigures : public ProgramTest {
 protected:
  Json analyzed(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"analyze", "--json"});
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }
};

// ITU-R BS.1770-5: a sine of 997 Hz at 0 dBFS in one front channel reads −3.01 LKFS. At 1 kHz the
// filter's gain is the same within 0.01 dB.
TEST_F(ProgramFigures, MeasuresASineAsTheStandardSays) {
  const Json figures = analyzed({"good.wav"});
  EXPECT_NEAR(figures["integratedLUFS"], -6.02, 0.05);  // two channels at −6.02 dBFS
  EXPECT_NEAR(figures["samplePeakDB"], -6.02, 0.01);
  EXPECT_NEAR(figures["truePeakDB"], -6.02, 0.05);
  EXPECT_NEAR(figures["channelCrestFactorDB"][0], 3.01, 0.01);
  EXPECT_EQ(figures["schemaVersion"], 1);
  EXPECT_EQ(figures["url"], "good.wav");
  EXPECT_EQ(figures["fileFormat"], "WAV");
  EXPECT_EQ(figures["durationSeconds"], 1.0);
  EXPECT_EQ(figures["channelLabels"], Json({"L", "R"}));
  EXPECT_FALSE(figures.contains("loudnessCurve"));
}

TEST_F(ProgramFigures, GivesTheCurvesOnRequest) {
  const Json figures = analyzed({"good.wav", "--curves"});
  EXPECT_EQ(figures["loudnessCurve"].size(), 10U);
  EXPECT_EQ(figures["stereoWidthCurve"].size(), 10U);
  EXPECT_NEAR(figures["stereoWidthCurve"][3]["correlation"], 1, 1e-5);
  EXPECT_EQ(analyzed({"good.wav", "--curves", "--no-stereo"})["stereoWidthCurve"].size(), 0U);
}

TEST_F(ProgramFigures, ReadsHeaderlessAudioAsDeclared) {
  const std::string samples = sineSamples(48'000, 0.5);
  folder().write("plain.raw", samples);
  folder().write("odd.raw", "seven b" + samples + "xx");
  const Json expected = analyzed({"good.wav"});
  using Words = std::vector<std::string>;
  for (const auto& words : {Words{"plain.raw", "--raw", "s16le,48000,2"},
                            Words{"odd.raw", "--raw", "s16le,48000,2,skip=7,tolerate=2"},
                            Words{"odd.raw", "--raw", "s16le", "--rate", "48000", "--channels", "2",
                                  "--skip", "7", "--tolerate", "2"}}) {
    const Json figures = analyzed(words);
    EXPECT_EQ(figures["integratedLUFS"], expected["integratedLUFS"]);
    EXPECT_EQ(figures["channelRMSDB"], expected["channelRMSDB"]);
    EXPECT_EQ(figures["fileFormat"], "RAW s16le");
    EXPECT_EQ(figures["rawFormat"]["encoding"], "int16");
  }
  EXPECT_EQ(run({"analyze", "odd.raw", "--raw", "s16le,48000,2"}).exitCode, 1);
}

TEST_F(ProgramFigures, IgnoresTheTopByteOf24BitsIn32) {
  std::string words;
  for (int i = 0; i < 4800; ++i)
    words += i % 2 == 0 ? std::string("\0\0\0\xFF", 4) : std::string("\0\0\x40\xAB", 4);
  folder().write("words.raw", words);
  const Json figures = analyzed({"words.raw", "--raw", "s24_32le,48000,1"});
  EXPECT_NEAR(figures["samplePeakDB"], -6.02, 0.01);       // 0x400000 of 0x800000
  EXPECT_NEAR(figures["channelDCOffset"][0], 0.25, 1e-6);  // the other half of the samples is 0.0
}

TEST_F(ProgramFigures, FindsClippingRuns) {
  std::string fullScale;
  for (int i = 0; i < 20; ++i) fullScale += "\xFF\x7F";
  folder().write("loud.wav",
                 waveFile(sineSamples(4'800, 0.5) + fullScale + sineSamples(4'800, 0.5)));
  const Json figures = analyzed({"loud.wav"});
  ASSERT_EQ(figures["clippingRuns"].size(), 2U);
  EXPECT_EQ(figures["clippingRuns"][1].dump(),
            R"({"channel":1,"frameCount":10,"startFrame":4800,"startSeconds":0.1})");
  EXPECT_THAT(run({"analyze", "loud.wav"}).output, HasSubstr("0:00.100      L             10\n"));
}

TEST_F(ProgramFigures, MeasuresWhatIsThereOfATruncatedFileAndWarns) {
  const std::string whole = waveFile(sineSamples(48'000, 0.5));
  folder().write("cut.wav", whole.substr(0, whole.size() / 2));
  const ProgramEnd end = run({"analyze", "cut.wav"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, HasSubstr("\n  Warning: "));
  const Json figures = analyzed({"cut.wav"});
  EXPECT_EQ(figures["warnings"][0]["code"], "truncatedAudio");
  EXPECT_THAT(run({"analyze", "-q", "cut.wav"}).errors, StartsWith("orvane: warning: cut.wav: "));
}

TEST_F(ProgramFigures, ShowsHostileNamesHarmlessly) {
  const std::string name = "a\x1B[2J\u202E\nb\xFF.wav";
  folder().write(name, waveFile(sineSamples(4'800, 0.5)));
  for (const char* command : {"analyze", "identify"}) {
    const ProgramEnd table = run({command, name});
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_THAT(table.output, HasSubstr("a\\x1B[2J\\u202E\\nb\\xFF.wav"));
    const ProgramEnd json = run({command, "--json", name});
    ASSERT_EQ(jsonLines(json.output).size(), 1U);
    EXPECT_EQ(jsonLines(json.output)[0]["url"], "a\x1B[2J\u202E\nb\uFFFD.wav");
    for (const std::string& text : {table.output, json.output}) {
      EXPECT_THAT(text, Not(HasSubstr("\x1B")));
      EXPECT_THAT(text, Not(HasSubstr("\u202E")));
    }
  }
}

TEST_F(ProgramFigures, IdentifiesFilesByTheirBytes) {
  folder().write("wrong.mp3", waveFile(sineSamples(480, 0.5)));
  const ProgramEnd table = run({"identify", "good.wav", "wrong.mp3"});
  EXPECT_EQ(table.exitCode, 0);
  EXPECT_EQ(table.output,
            "File       Format           Encoding          Rate  Channels\n"
            "good.wav   WAV              16-bit integer  48 kHz  2: L R\n"
            "wrong.mp3  WAV, named .mp3  16-bit integer  48 kHz  2: L R\n");
  const auto documents = jsonLines(run({"identify", "--json", "wrong.mp3"}).output);
  ASSERT_EQ(documents.size(), 1U);
  EXPECT_EQ(documents[0]["containerTypeID"], "WAVE");
  EXPECT_EQ(documents[0]["formatID"], "lpcm");
  EXPECT_EQ(documents[0]["isMisnamed"], true);
  EXPECT_EQ(documents[0]["formatLabel"], "WAV, named .mp3");
  EXPECT_EQ(documents[0]["pcmEncoding"].dump(), R"({"bitDepth":16,"isFloat":false})");
  EXPECT_EQ(documents[0]["sampleRate"], 48000.0);
}

}  // namespace
}  // namespace orvane::cli::test
