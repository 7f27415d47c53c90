#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;

constexpr const char* kSong = R"({"source": "analysis", "analysedAt": "2024-01-31T12:00:00Z",
"duration": 180, "stems": [
  {"stem": "vocal", "ranges": [{"start": 0, "end": 90}], "activity": []},
  {"stem": "drum", "ranges": [{"start": 0, "end": 45}],
   "activity": [{"time": 0, "value": 1}, {"time": 90, "value": 0}]}],
"beats": [0, 0.5, 1, 1.5, 41, 41.5], "bars": [0, 1, 41.5], "beatsPerMinute": 120,
"sections": [{"start": 0, "end": 41.2}, {"start": 41.2, "end": 43}, {"start": 43, "end": 175},
             {"start": 175, "end": 180}],
"segments": [], "phrases": [],
"keys": [{"span": {"start": 0, "end": 180}, "tonic": "fSharp", "mode": "minor"}], "paces": []})";

class ProgramMusic : public ProgramTest {
 protected:
  ProgramMusic() { folder().write("song.json", kSong); }

  ProgramEnd music(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "music");
    return run(arguments);
  }
  Json document(const std::vector<std::string>& arguments) const {
    const ProgramEnd end = music(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }
};

TEST_F(ProgramMusic, ShowsAnAnalysis) {
  const ProgramEnd end = music({"show", "song.json"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  for (const char* const part :
       {"song.json\n", "Duration  3:00.000\n", "Key       F♯ minor\n", "Tempo     120.0 BPM\n",
        "Grid      6 beats, 3 bars\n", "analysis, 2024-01-31T12:00:00Z\n", "50.0 %  █", "25.0 %  █",
        "      2  0:41.200  0:43.000  0:01.800    2\n"})
    EXPECT_THAT(end.output, HasSubstr(part));
}

TEST_F(ProgramMusic, ShowsAnAnalysisToMachines) {
  const Json shown = document({"show", "song.json", "--json"});
  EXPECT_EQ(shown["url"], "song.json");
  EXPECT_EQ(shown["dominantKey"], "F♯ minor");
  EXPECT_EQ(shown["looksLikeMusic"], true);
  EXPECT_EQ(shown["stemCoverage"][1], (Json{{"stem", "drum"}, {"percentage", 25}}));
  EXPECT_EQ(shown["analysis"], Json::parse(kSong));
}

TEST_F(ProgramMusic, MakesChaptersOfSections) {
  EXPECT_EQ(document({"chapters", "song.json"}),
            Json::parse(R"([{"name": "Section 1", "startSec": 0, "endSec": 41.2},
                            {"name": "Section 2", "startSec": 41.2, "endSec": 180}])"));
  EXPECT_EQ(document({"chapters", "song.json", "--minimum-length", "0"}).size(), 4U);
  EXPECT_EQ(document({"chapters", "song.json", "--snap", "beat"})[1]["startSec"], 41);
  EXPECT_EQ(document({"chapters", "song.json", "--snap", "bar"})[1]["startSec"], 41.5);
  EXPECT_EQ(document({"chapters", "song.json", "--snap", "off"})[1]["startSec"], 41.2);
}

TEST_F(ProgramMusic, MakesChaptersThatCanBeMeasured) {
  std::string song = kSong;
  song.replace(song.find("180"), 3, "1.0");
  folder().write("short.json", song);
  ASSERT_EQ(music({"chapters", "short.json", "-o", "chapters.json"}).exitCode, 0);
  const ProgramEnd end = run({"analyze", "good.wav", "--chapters", "chapters.json"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, HasSubstr("Section 1"));
}

TEST_F(ProgramMusic, ClipsAnAnalysis) {
  const Json clipped = document({"clip", "song.json", "--length", "0:41.250"});
  EXPECT_EQ(clipped["duration"], 41.25);
  EXPECT_EQ(clipped["beats"], Json::parse("[0, 0.5, 1, 1.5, 41]"));
  EXPECT_EQ(clipped["bars"], Json::parse("[0, 1]"));
  EXPECT_EQ(clipped["sections"], Json::parse(R"([{"start": 0, "end": 41.2},
                                                 {"start": 41.2, "end": 41.25}])"));
  EXPECT_EQ(document({"clip", "song.json", "--length", "500"}), Json::parse(kSong));
}

TEST_F(ProgramMusic, ReadsStandardInputAndWritesAFile) {
  ProgramSetup setup;
  setup.arguments = {"music", "clip", "-", "--length", "100", "-o", "clipped.json"};
  setup.input = kSong;
  const ProgramEnd end = run(setup);
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.output, "");
  EXPECT_EQ(document({"show", "clipped.json", "--json"})["analysis"]["duration"], 100);
}

TEST_F(ProgramMusic, ReplacesNothingUnaskedAndNeverWhatItReads) {
  folder().write("there.json", "precious");
  const auto error = [&](const std::vector<std::string>& arguments) {
    const ProgramEnd end = music(arguments);
    EXPECT_EQ(end.exitCode, 1);
    return end.errors;
  };
  EXPECT_EQ(error({"clip", "song.json", "--length", "9", "-o", "there.json"}),
            "orvane: there.json: File exists; --force replaces it\n");
  EXPECT_EQ(orvane::test::readFile(folder() / "there.json"), "precious");
  error({"clip", "song.json", "--length", "9", "-o", "song.json", "--force"});
  EXPECT_EQ(orvane::test::readFile(folder() / "song.json"), kSong);
  EXPECT_EQ(music({"chapters", "song.json", "-o", "there.json", "--force"}).exitCode, 0);
}

TEST_F(ProgramMusic, SaysWhatIsWrong) {
  folder().write("bad.json", "{}");
  std::string empty = kSong;
  empty.replace(empty.find("180"), 3, "0.0");
  folder().write("empty.json", empty);
  for (const char* const action : {"show", "chapters"}) {
    const ProgramEnd end = music({action, "bad.json"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.errors, "orvane: bad.json: The key \"source\" is missing.\n");
  }
  EXPECT_EQ(music({"chapters", "empty.json"}).errors,
            "orvane: empty.json: the analysis has no sections\n");
  EXPECT_EQ(music({"show", "missing.json"}).exitCode, 1);
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"clip", "song.json"},
                                                {"clip", "song.json", "--length", "-1"},
                                                {"chapters", "song.json", "--snap", "note"},
                                                {"chapters", "song.json", "--minimum-length", "x"},
                                                {}})
    EXPECT_EQ(music(wrong).exitCode, 2);
}

}  // namespace
}  // namespace orvane::cli::test
