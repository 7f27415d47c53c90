#include <cmath>

#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// mono.wav: 4 s at −26 dBFS, 4 s so quiet that it passes the gate at −70 LUFS only when it is
/// there twice, and 4 s at −20 dBFS. twin.wav: the same on two channels.
class ProgramDualMono : public ProgramTest {
 protected:
  ProgramDualMono() {
    for (const int channels : {1, 2}) {
      std::string samples;
      for (const double amplitude : {0.05, kQuiet, 0.1})
        samples += sineSamples(4 * 48'000, amplitude, channels);
      folder().write(channels == 1 ? "mono.wav" : "twin.wav", waveFile(samples, channels));
    }
  }
  Json analyzed(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"analyze", "--json"});
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }

  static constexpr double kQuiet = 0.00038;  // −71.4 LUFS in one channel
};

/// Both sides may cut the audio otherwise, which changes no level by more than rounding.
void expectEqual(const Json& dual, const Json& twin, const std::string& place) {
  if (dual.is_number_float()) {
    ASSERT_TRUE(twin.is_number()) << place << ": " << twin;
    EXPECT_NEAR(dual.get<double>(), twin.get<double>(), 1e-5) << place;
  } else if (dual.is_structured()) {
    ASSERT_EQ(dual.size(), twin.size()) << place;
    for (const auto& [key, value] : dual.items())
      expectEqual(value, dual.is_object() ? twin.at(key) : twin.at(std::stoul(key)),
                  place + "/" + key);
  } else {
    EXPECT_EQ(dual, twin) << place;
  }
}

/// Without what tells how many channels the file has.
Json figuresOf(Json document) {
  for (const char* key :
       {"url", "channelCount", "channelLabels", "fileSize", "dualMono", "channelPeakDB",
        "channelRMSDB", "channelCrestFactorDB", "channelDCOffset", "channelHasClipping",
        "stereoWidthCurve", "averageCorrelation", "lowestCorrelation", "identicalChannels"})
    EXPECT_EQ(document.erase(key), 1U) << key;
  return document;
}

TEST_F(ProgramDualMono, HasEveryFigureOfTwoEqualChannels) {
  folder().write("speech.csv", "start,end\n3,9\n");
  folder().write("chapters.csv", "name,start\nA,0\nB,4\nC,8\n");
  const Json span0 = {{"start", 0}, {"end", 4}};
  const Json span1 = {{"start", 4}, {"end", 12}};
  const Json vocal = {{"stem", "vocal"}, {"ranges", {span1}}, {"activity", Json::array()}};
  Json music = {{"source", "a test"},
                {"analysedAt", "2024-01-31T12:00:00Z"},
                {"duration", 12},
                {"stems", {vocal}},
                {"sections", {span0, span1}}};
  for (const char* key : {"beats", "bars", "segments", "phrases", "keys", "paces"})
    music[key] = Json::array();
  folder().write("music.json", music.dump());
  for (const char* file : {"mono.wav", "twin.wav"})
    ASSERT_EQ(run({"dialogue", "import", "speech.csv", file}).exitCode, 0);

  const auto all = [&](const char* file) {
    return analyzed({file, "--dual-mono", "--curves", "--dialogue", "--selection", "3-9",
                     "--max-momentary", "-30", "--chapters", "chapters.csv", "--music",
                     "music.json", "--targets", "spotify"});
  };
  const Json dual = all("mono.wav");
  const Json twin = all("twin.wav");
  EXPECT_EQ(dual["dualMono"], true);
  EXPECT_EQ(twin["dualMono"], false);
  expectEqual(figuresOf(dual), figuresOf(twin), "");
}

TEST_F(ProgramDualMono, CountsTwiceBeforeTheGates) {
  folder().write("quiet.wav", waveFile(sineSamples(96'000, kQuiet, 1), 1));
  EXPECT_TRUE(analyzed({"quiet.wav"})["integratedLUFS"].is_null());
  EXPECT_NEAR(analyzed({"quiet.wav", "--dual-mono"})["integratedLUFS"], -68.4, 0.2);
}

/// It was called mono and counted with --dual-mono, though no meter takes an LFE channel.
TEST_F(ProgramDualMono, DoesNotMakeMonoOfALoneLFEChannel) {
  std::string bytes = waveFile(sineSamples(96'000, 0.1, 1), 1);
  constexpr std::uint32_t kMaskOfLFE = 8;
  const std::string format = littleEndian(0xFFFE, 2) + bytes.substr(22, 14) + littleEndian(22, 2) +
                             littleEndian(16, 2) + littleEndian(kMaskOfLFE, 4) +
                             littleEndian(1, 2) +
                             std::string("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14);
  bytes.replace(16, 20, littleEndian(format.size(), 4) + format);
  folder().write("lfe.wav", bytes);
  const auto table = run({"analyze", "lfe.wav"}).output;
  EXPECT_THAT(table, HasSubstr("1 channel (LFE)"));
  EXPECT_THAT(table, HasSubstr("An LFE channel alone, which loudness leaves out."));
  const Json figures = analyzed({"lfe.wav", "--dual-mono"});
  EXPECT_EQ(figures["channelLabels"], Json::array({"LFE"}));
  EXPECT_EQ(figures["dualMono"], false);
  EXPECT_TRUE(figures["integratedLUFS"].is_null());
}

TEST_F(ProgramDualMono, IsSaidByTableAndReports) {
  EXPECT_THAT(run({"analyze", "mono.wav"}).output, HasSubstr("measured as one channel"));
  EXPECT_THAT(run({"analyze", "mono.wav", "--dual-mono"}).output,
              HasSubstr("Mono, measured as two equal loudspeakers."));
  folder().write("chapters.csv", "name,start\nA,0\nB,4\n");
  const std::string said = "Mono as two equal loudspeakers";
  for (const char* format : {"--html", "--report", "--csv"}) {
    EXPECT_THAT(run({"analyze", "mono.wav", "--dual-mono", format, "-"}).output, HasSubstr(said))
        << format;
    EXPECT_THAT(run({"analyze", "mono.wav", format, "-"}).output, Not(HasSubstr(said))) << format;
    EXPECT_THAT(run({"analyze", "mono.wav", "--dual-mono", "--chapters", "chapters.csv",
                     "--channel-labels", "Boom", format, "-"})
                    .output,
                HasSubstr("Boom as two equal loudspeakers"))
        << format;
  }
}

}  // namespace
}  // namespace orvane::cli::test
