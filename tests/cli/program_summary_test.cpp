// `--summary`: a row per file, whatever ends the run.

#include <signal.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "tests/cli/program_fixture.h"

namespace orvane::cli::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class ProgramSummary : public ProgramTest {
 protected:
  std::string text(const std::string& name = "s.csv") const {
    std::ifstream file(folder() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  /// Rows without a line end or comma in their cells.
  std::vector<std::vector<std::string>> rows() const {
    std::vector<std::vector<std::string>> result;
    std::istringstream lines(text());
    for (std::string line; std::getline(lines, line);) {
      std::istringstream cells(line);
      auto& row = result.emplace_back();
      for (std::string cell; std::getline(cells, cell, ',');) row.push_back(cell);
    }
    return result;
  }
  std::vector<std::string> column(const std::string& title) const {
    const auto all = rows();
    const auto place = std::ranges::find(all.at(0), title) - all.at(0).begin();
    std::vector<std::string> cells;
    for (auto row = all.begin() + 1; row != all.end(); ++row)
      cells.push_back(static_cast<std::size_t>(place) < row->size()
                          ? row->at(static_cast<std::size_t>(place))
                          : "");
    return cells;
  }
  void writeTone(const std::string& name, double amplitude) const {
    folder().write(name, waveFile(sineSamples(24'000, amplitude)));
  }
};

TEST_F(ProgramSummary, HasARowPerFileWithEveryFigureAndTheFailedOnes) {
  writeTone("loud.wav", 1);
  const ProgramEnd end = run({"analyze", "-q", "--summary", "s.csv", "loud.wav", "none.wav",
                              "good.wav", "--targets", "ebu-r128,spotify"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(column("path"), ElementsAre("loud.wav", "none.wav", "good.wav"));
  EXPECT_THAT(column("error"), ElementsAre("", "none.wav: No such file or directory", ""));
  EXPECT_THAT(column("fileFormat"), ElementsAre("WAV", "", "WAV"));
  EXPECT_THAT(column("speechPercentage"), ElementsAre("", "", ""));
  EXPECT_THAT(column("ebu-r128.verdict"), ElementsAre("fail", "", "fail"));
  const auto json = jsonLines(run({"analyze", "--json", "good.wav"}).output).at(0);
  for (const char* key : {"integratedLUFS", "loudnessRange", "truePeakDB", "samplePeakDB",
                          "maxMomentaryLUFS", "maxShortTermLUFS", "sampleRate", "fileSize"})
    EXPECT_EQ(std::stod(column(key).at(2)), json.at(key)) << key;
  EXPECT_NEAR(std::stod(column("spotify.deltaLU").at(2)),
              json.at("integratedLUFS").get<double>() + 14, 1e-5);
  std::istringstream lines(text());
  for (std::string line; std::getline(lines, line);)
    EXPECT_EQ(std::ranges::count(line, ',') + 1, std::ssize(rows().at(0))) << line;
}

TEST_F(ProgramSummary, KeepsNamesFromBeingTakenForAnythingElse) {
  writeTone("=1+1, \"x\".wav", 0.5);
  writeTone("b\xFF.wav", 0.5);
  const ProgramEnd end =
      run({"analyze", "-q", "--summary", "s.csv", "--", "=1+1, \"x\".wav", "b\xFF.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(text(), HasSubstr("\n\"./=1+1, \"\"x\"\".wav\","));
  EXPECT_THAT(text(), HasSubstr("\nb\\xFF.wav,"));
}

TEST_F(ProgramSummary, ReplacesNothingUnasked) {
  folder().write("s.csv", "mine");
  const ProgramEnd refused = run({"analyze", "-q", "--summary", "s.csv", "good.wav"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_THAT(refused.errors, HasSubstr("--force"));
  EXPECT_EQ(run({"analyze", "-q", "--summary", "s.csv", "--resume", "good.wav"}).exitCode, 1);
  EXPECT_EQ(text(), "mine");
  EXPECT_EQ(run({"analyze", "-q", "--summary", "s.csv", "--force", "good.wav"}).exitCode, 0);
  EXPECT_THAT(text(), StartsWith("path,"));
  const ProgramEnd input = run({"analyze", "-q", "--summary", "good.wav", "--force", "good.wav"});
  EXPECT_EQ(input.exitCode, 1);
  EXPECT_EQ(jsonLines(run({"identify", "--json", "good.wav"}).output).at(0).at("formatLabel"),
            "WAV");
}

TEST_F(ProgramSummary, ResumingMeasuresOnlyWhatIsNotInIt) {
  for (const char* name : {"a.wav", "b.wav", "c.wav", "d.wav"}) writeTone(name, 0.5);
  EXPECT_EQ(
      run({"analyze", "-q", "--summary", "s.csv", "a.wav", "c.wav", "none.wav", "d.wav"}).exitCode,
      1);
  writeTone("c.wav", 0.25);
  writeTone("none.wav", 0.5);
  const ProgramEnd end = run({"analyze", "--json", "--summary", "s.csv", "--resume", "a.wav",
                              "b.wav", "c.wav", "none.wav", "d.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  std::vector<std::string> measured;
  for (const auto& document : jsonLines(end.output)) measured.push_back(document.at("url"));
  EXPECT_THAT(measured, ElementsAre("b.wav", "c.wav", "none.wav"));
  EXPECT_THAT(column("path"), ElementsAre("a.wav", "b.wav", "c.wav", "none.wav", "d.wav"));
  EXPECT_THAT(column("samplePeakDB").at(2), StartsWith("-12.04"));
  EXPECT_THAT(run({"analyze", "-q", "--summary", "s.csv", "--resume", "a.wav", "b.wav"}).output,
              IsEmpty());
  const ProgramEnd other =
      run({"analyze", "-q", "--summary", "s.csv", "--resume", "a.wav", "--targets", "spotify"});
  EXPECT_EQ(other.exitCode, 1);
  EXPECT_THAT(other.errors, HasSubstr("columns"));
}

// A batch that was stopped could only be judged by measuring all of it again.
TEST_F(ProgramSummary, ResumingEnforcesByTheRowsToo) {
  writeTone("loud.wav", 1);
  writeTone("r128.wav", std::pow(10, -23.0 / 20));
  const auto resumed = [this](std::vector<std::string> files, const std::string& choice,
                              const std::string& value) {
    std::vector<std::string> all = {"analyze", "-q", "--summary", "s.csv", choice, value};
    all.insert(all.end(), files.begin(), files.end());
    run(all);
    all.insert(all.end(), {"--resume", "--enforce"});
    const ProgramEnd end = run(all);
    EXPECT_THAT(end.output, IsEmpty());
    std::filesystem::remove(folder() / "s.csv");
    return end;
  };
  const ProgramEnd missed = resumed({"r128.wav", "loud.wav"}, "--targets", "spotify,ebu-r128");
  EXPECT_EQ(missed.exitCode, 3);
  EXPECT_THAT(missed.errors,
              HasSubstr("orvane: loud.wav: misses ebu-r128, as its row of the summary says\n"));
  EXPECT_EQ(resumed({"loud.wav"}, "--mode", "music").exitCode, 0);
  EXPECT_EQ(resumed({"loud.wav"}, "--mode", "broadcast").exitCode, 3);
  const ProgramEnd album = run({"analyze", "--summary", "s.csv", "--resume", "--album", "a.wav"});
  EXPECT_EQ(album.exitCode, 2);
  EXPECT_THAT(album.errors, HasSubstr("--album measures every file anew"));
}

TEST_F(ProgramSummary, ResumesBehindARowThatWasNotFinished) {
  EXPECT_EQ(run({"analyze", "-q", "--summary", "s.csv", "good.wav"}).exitCode, 0);
  const std::string whole = text();
  folder().write("s.csv", whole + "half.wav,100,\"20");
  writeTone("half.wav", 0.5);
  EXPECT_EQ(
      run({"analyze", "-q", "--summary", "s.csv", "--resume", "good.wav", "half.wav"}).exitCode, 0);
  EXPECT_THAT(text(), StartsWith(whole + "half.wav,"));
  EXPECT_EQ(rows().size(), 3U);
}

TEST_F(ProgramSummary, KeepsItsFinishedRowsWhenTheRunIsStopped) {
  folder().write("long.wav", waveFile("", 1));
  std::filesystem::resize_file(folder() / "long.wav", std::uintmax_t{48'000} * 3600 * 3 * 2);
  for (const int signal : {SIGINT, SIGTERM, SIGKILL}) {
    ProgramSetup setup;
    setup.arguments = {"analyze", "-q", "--force", "--summary", "s.csv", "good.wav", "long.wav"};
    setup.meanwhile = [&](int process) {
      for (int i = 0; i < 500 && text().find("\ngood.wav") == std::string::npos; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
      kill(process, signal);
    };
    run(setup);
    EXPECT_THAT(column("path"), ElementsAre("good.wav")) << signal;
    std::filesystem::remove(folder() / "s.csv");
  }
}

TEST_F(ProgramSummary, IsNoPartOfTheFolderThatItLiesIn) {
  EXPECT_EQ(run({"analyze", "-q", "--recursive", "--summary", "s.csv", "."}).exitCode, 0);
  const ProgramEnd end =
      run({"analyze", "-q", "--recursive", "--summary", "s.csv", "--resume", "."});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(column("path"), ElementsAre("./good.wav"));
}

TEST_F(ProgramSummary, HoldsALargeBatchInItsOrder) {
  const std::string tone = waveFile(sineSamples(2'400, 0.5));
  std::vector<std::string> names;
  for (int i = 0; i < 2'000; ++i) {
    const auto number = [](int value) { return std::to_string(1000 + value); };
    names.push_back("m/" + number(i / 50) + "/" + number(i) + ".wav");
    std::filesystem::create_directories((folder() / names.back()).parent_path());
    folder().write(names.back(), i % 100 == 7 ? "nothing" : tone);
  }
  const ProgramEnd end =
      run({"analyze", "-q", "--recursive", "--jobs", "2", "--summary", "s.csv", "m"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(column("path"), names);
  const auto errors = column("error");
  EXPECT_EQ(errors.size() - static_cast<std::size_t>(std::ranges::count(errors, "")), 20U);
  EXPECT_THAT(end.errors, HasSubstr("orvane: 1,980 files measured, 20 failed\n"));
}

}  // namespace
}  // namespace orvane::cli::test
