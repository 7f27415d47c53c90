// Batches: folders, their failures, what closes them, the album.

#include "tests/cli/program_fixture.h"
#include "tests/support/tool_runner.h"

namespace orvane::cli::test {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class ProgramFolders : public ProgramTest {
 protected:
  static std::string tone(double seconds, double amplitude) {
    return waveFile(sineSamples(static_cast<std::size_t>(48'000 * seconds), amplitude));
  }
  void write(const std::string& name, const std::string& bytes) const {
    std::filesystem::create_directories((folder() / name).parent_path());
    folder().write(name, bytes);
  }
  /// Where files were found, or why they failed.
  static std::vector<std::string> namesIn(const std::string& output) {
    std::vector<std::string> names;
    for (const auto& document : jsonLines(output)) names.push_back(document.at("url"));
    return names;
  }
};

TEST_F(ProgramFolders, TakesTheAudioFilesInAFolderAndBelowSortedByPath) {
  write("m/b/2.wav", tone(0.5, 0.5));
  write("m/b/10.wav", tone(0.5, 0.5));
  write("m/a.wav", tone(0.5, 0.5));
  write("m/without extension", tone(0.5, 0.5));
  write("m/cover.jpg", "\xFF\xD8\xFF\xE0 a picture");
  write("m/b/notes.txt", "words");
  write("m/b/._2.wav", std::string("\0\5\26\7", 4) + "what another system puts beside its files");
  std::filesystem::create_directory_symlink(folder() / "m/b", folder() / "m/linked");
  std::filesystem::create_symlink(folder() / "m/a.wav", folder() / "m/z.wav");
  for (const char* command : {"analyze", "identify"}) {
    const ProgramEnd end = run({command, "--recursive", "--json", "m", "good.wav"});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(namesIn(end.output), ElementsAre("m/a.wav", "m/b/10.wav", "m/b/2.wav",
                                                 "m/without extension", "m/z.wav", "good.wav"));
    EXPECT_THAT(end.errors, IsEmpty());
  }
  EXPECT_THAT(run({"analyze", "--recursive", "-q", "m"}).errors,
              HasSubstr("5 files measured, 3 passed over as no audio"));
}

// Files whose names promise audio are complained of, and by the path under which they were found.
TEST_F(ProgramFolders, ComplainsOfWhatShouldBeAudio) {
  write("m/a/take.wav", "nothing");
  write("m/b/take.wav", tone(0.5, 0.5));
  std::filesystem::create_symlink("nowhere", folder() / "m/gone.flac");
  const ProgramEnd end = run({"analyze", "--recursive", "--json", "./m/"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, AllOf(HasSubstr("orvane: ./m/a/take.wav: "),
                                HasSubstr("orvane: ./m/gone.flac: No such file or directory\n")));
}

TEST_F(ProgramFolders, SaysHowAFolderIsTaken) {
  std::filesystem::create_directories(folder() / "m");
  const ProgramEnd end = run({"analyze", "m/"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: m/: Is a directory; --recursive takes the audio files in it\n");
}

// Two files of one name could not be told apart.
TEST_F(ProgramFolders, NamesFilesInErrorsAsTheyWereTyped) {
  write("a/x.wav", "RIFF");
  EXPECT_THAT(run({"analyze", "a/x.wav"}).errors, StartsWith("orvane: a/x.wav: "));
  EXPECT_THAT(run({"analyze", "a/../a/y.wav"}).errors, StartsWith("orvane: a/../a/y.wav: "));
  EXPECT_THAT(run({"analyze", "a/x.wav", "--raw", "s16le,48000,16"}).errors,
              StartsWith("orvane: a/x.wav: The file"));
}

TEST_F(ProgramFolders, PointsToHeaderlessAudio) {
  folder().write("take.bin", std::string(4000, '\x81'));
  EXPECT_THAT(run({"analyze", "take.bin"}).errors,
              AllOf(HasSubstr("--raw"), HasSubstr("orvane raw guess")));
}

TEST_F(ProgramFolders, ClosesABatchWithWhatItCameTo) {
  folder().write("loud.wav", tone(1, 1));
  folder().write("soft.wav", tone(1, 0.1));
  const ProgramEnd end = run({"analyze", "good.wav", "loud.wav", "bad.wav", "soft.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.output, EndsWith("\n3 files measured, 1 failed\n"
                                   "Loudest      0.0 LUFS  loud.wav\n"
                                   "Quietest   -20.0 LUFS  soft.wav\n"
                                   "Spread      20.0 LU\n"
                                   "Failed    bad.wav\n"));
  EXPECT_THAT(run({"analyze", "good.wav"}).output, Not(HasSubstr("measured\n")));
  EXPECT_THAT(run({"analyze", "-q", "good.wav", "soft.wav"}).errors,
              StartsWith("orvane: 2 files measured\norvane: Loudest"));
}

TEST_F(ProgramFolders, RowsHaveSpeechAndVerdictsWhereTheyAreAskedFor) {
  const ProgramEnd end = run({"analyze", "-q", "good.wav", "--targets", "ebu-r128"});
  EXPECT_EQ(end.output,
            "  I LUFS  LRA LU  M max  S max    dBTP    dBFS  DR     Duration   ebu-r128  by LU  "
            "File\n"
            "    -6.0     0.0   -6.0  -10.8   -6.02   -6.02   0     0:01.000       fail  +17.0  "
            "good.wav\n");
}

TEST_F(ProgramFolders, ReadsListsOfEitherLineEndWithAByteOrderMark) {
  folder().write("list", "\xEF\xBB\xBFgood.wav\r\ngood.wav\r\n");
  const ProgramEnd end = run({"identify", "--json", "--files-from", "list"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(namesIn(end.output), ElementsAre("good.wav", "good.wav"));
}

TEST_F(ProgramFolders, JSONTellsWhatMadeItAndWhatWasNotLookedFor) {
  const auto plain = jsonLines(run({"analyze", "--json", "good.wav"}).output).at(0);
  EXPECT_TRUE(plain.at("appVersion").is_string());
  EXPECT_TRUE(plain.at("speechPercentage").is_null());
  EXPECT_TRUE(plain.at("speechGatedLUFS").is_null());
  EXPECT_NEAR(plain.at("averageCorrelation"), 1, 1e-6);
  EXPECT_NEAR(plain.at("lowestCorrelation"), 1, 1e-6);
}

TEST_F(ProgramFolders, JSONLeadsBackToNamesThatAreNoUTF8) {
  const std::string name = "caf\xE9 1.wav";
  folder().write(name, tone(0.5, 0.5));
  for (const std::string& file : {name, "no " + name}) {
    const auto document = jsonLines(run({"analyze", "--json", file}).output).at(0);
    EXPECT_THAT(document.at("urlPercentEncoded").get<std::string>(), EndsWith("caf%E9%201.wav"));
  }
  EXPECT_FALSE(
      jsonLines(run({"analyze", "--json", "good.wav"}).output).at(0).contains("urlPercentEncoded"));
}

TEST_F(ProgramFolders, MeasuresFilesAsOneAlbum) {
  // A quiet second file lies below the relative gate of both together.
  const std::string loud = sineSamples(48'000 * 40, 0.5);
  const std::string quiet = sineSamples(48'000 * 30, 0.05);
  folder().write("1.wav", waveFile(loud));
  folder().write("2.wav", waveFile(quiet));
  folder().write("joined.wav", waveFile(loud + quiet));
  const auto joined = jsonLines(run({"analyze", "--json", "joined.wav"}).output).at(0);
  const auto lines = jsonLines(run({"analyze", "--album", "--json", "1.wav", "2.wav"}).output);
  ASSERT_EQ(lines.size(), 3U);
  ASSERT_EQ(lines[2].size(), 1U);
  const Json& album = lines[2].at("album");
  EXPECT_EQ(album.at("fileCount"), 2);
  EXPECT_NEAR(album.at("integratedLUFS"), joined.at("integratedLUFS"), 0.01);
  EXPECT_NEAR(album.at("loudnessRange"), joined.at("loudnessRange"), 0.3);
  for (const char* key : {"truePeakDB", "samplePeakDB", "maxMomentaryLUFS", "maxShortTermLUFS"})
    EXPECT_NEAR(album.at(key), joined.at(key), 0.001) << key;
  EXPECT_NEAR(album.at("channelRMSDB").at(0), joined.at("channelRMSDB").at(0), 0.001);
  EXPECT_TRUE(album.at("speechPercentage").is_null());

  EXPECT_THAT(run({"analyze", "--album", "1.wav", "2.wav"}).output,
              HasSubstr("  Album of 2 files\n"));
  EXPECT_THAT(run({"analyze", "--album", "-q", "1.wav", "2.wav"}).output,
              EndsWith("  Album of 2 files\n"));
}

TEST_F(ProgramFolders, AnAlbumHasTheFiguresOfTheFilesJoined) {
  // None of the lengths is whole in steps of 100 ms, and each programme moves by 12 dB.
  std::vector<std::string> names;
  std::vector<std::string> arguments = {"-v", "error"};
  for (const double decibels : {-6.0, -14.0, -20.0, -29.0}) {
    const auto index = static_cast<double>(names.size());
    std::string samples;
    for (int piece = 0; piece < 10; ++piece)
      samples += sineSamples(static_cast<std::size_t>(48'000 * (3.01 + 0.217 * index)),
                             std::pow(10, (decibels - 4 * (piece % 4)) / 20));
    names.push_back(std::to_string(names.size()) + ".wav");
    folder().write(names.back(), waveFile(samples));
    arguments.insert(arguments.end(), {"-i", (folder() / names.back()).string()});
  }
  arguments.insert(arguments.end(),
                   {"-filter_complex", "concat=n=4:v=0:a=1", (folder() / "joined.wav").string()});
  orvane::test::runTool("ffmpeg", arguments);
  const auto joined = jsonLines(run({"analyze", "--json", "joined.wav"}).output).at(0);
  names.insert(names.begin(), {"analyze", "--json", "--album"});
  const Json album = jsonLines(run(names).output).at(4).at("album");
  EXPECT_EQ(album.at("fileCount"), 4);
  EXPECT_NEAR(album.at("durationSeconds"), joined.at("durationSeconds"), 1e-6);
  EXPECT_NEAR(album.at("integratedLUFS"), joined.at("integratedLUFS"), 0.01);
  EXPECT_NEAR(album.at("loudnessRange"), joined.at("loudnessRange"), 0.3);
  EXPECT_GT(album.at("loudnessRange"), 10);
  EXPECT_EQ(album.at("truePeakDB"), joined.at("truePeakDB"));
}

}  // namespace
}  // namespace orvane::cli::test
