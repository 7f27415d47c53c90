#include "tests/cli/program_fixture.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ProgramBatch : public ProgramTest {
 protected:
  /// Files of very different length, so that they end in another order than they began.
  std::vector<std::string> writeFiles(std::size_t count) const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t frames = i % 5 == 0 ? 480'000 : 4'800;
      names.push_back("file " + std::to_string(i) + ".wav");
      folder().write(names.back(), waveFile(sineSamples(frames, 0.1)));
    }
    return names;
  }

  static std::vector<std::string> namesIn(const std::string& output) {
    std::vector<std::string> names;
    for (const auto& document : jsonLines(output)) names.push_back(document.at("url"));
    return names;
  }
};

TEST_F(ProgramBatch, KeepsTheOrderOfTheFilesUnderManyJobs) {
  const auto names = writeFiles(20);
  for (const char* jobs : {"1", "2", "7", "64"}) {
    std::vector<std::string> arguments = {"analyze", "--json", "--jobs", jobs};
    arguments.insert(arguments.end(), names.begin(), names.end());
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.errors, IsEmpty());
    EXPECT_EQ(namesIn(end.output), names) << jobs;
  }
}

TEST_F(ProgramBatch, GivesTheSameOutputWhateverTheJobs) {
  auto arguments = writeFiles(6);
  arguments.insert(arguments.begin(), "analyze");
  const std::string alone = run(arguments).output;
  arguments.insert(arguments.end(), {"--jobs", "3"});
  EXPECT_EQ(run(arguments).output, alone);
}

/// A single file is decoded on all cores, each of several on one.
TEST_F(ProgramBatch, GivesTheSameFiguresOfCompressedFilesWhateverTheJobs) {
  const auto encode = [&](const char* name, const char* source, std::vector<std::string> codec) {
    std::vector<std::string> words = {"-v", "error", "-y", "-f", "lavfi", "-i", source, "-c:a"};
    words.insert(words.end(), codec.begin(), codec.end());
    words.push_back((folder() / name).string());
    orvane::test::runTool("ffmpeg", words);
    return orvane::test::readFile(folder() / name);
  };
  const char* const kNoise = "anoisesrc=d=30:c=pink:r=48000:a=0.3:seed=7";
  const char* const kBursts =
      "aevalsrc='if(lt(mod(t,0.9),0.5),0.3*sin(5000*t)+0.3*(random(0)-0.5),0)':d=10:s=48000";
  const std::pair<const char*, std::vector<std::string>> files[] = {
      {"a.mp3", {"libmp3lame", "-b:a", "128k"}},
      {"a.ogg", {"libvorbis", "-b:a", "128k"}},
      {"a.opus", {"libopus", "-b:a", "128k"}},
      {"a.m4a", {"alac"}},
      {"a.flac", {"flac"}},
      {"b.m4a", {"aac", "-b:a", "128k"}},
      {"c.m4a", {"aac", "-b:a", "128k", "-aac_pns", "0"}}};
  std::vector<std::string> names;
  for (const auto& [name, codec] : files) {
    encode(name, kNoise, codec);
    names.emplace_back(name);
  }
  // A chain of two streams, and one layer behind another.
  const std::string low = encode("link.ogg", kBursts, {"libvorbis", "-q:a", "0"});
  const std::string high = encode("link.ogg", kBursts, {"libvorbis", "-q:a", "8"});
  folder().write("chain.ogg", low + high + low + high);
  const std::string third = encode("part.mp3", kBursts, {"libmp3lame", "-b:a", "128k"});
  folder().write("layers.mp3", third + encode("part.mp2", kBursts, {"mp2"}) + third);
  names.insert(names.end(), {"chain.ogg", "layers.mp3"});
  std::vector<std::string> arguments = {"analyze", "--json", "--jobs", "4"};
  std::string alone;
  for (const std::string& name : names) {
    arguments.push_back(name);
    alone += run({"analyze", "--json", name}).output;
  }
  EXPECT_EQ(run(arguments).output, alone);
}

TEST_F(ProgramBatch, MeasuresTheOtherFilesWhenOneFails) {
  folder().write("bad.wav", "nothing");
  for (const char* jobs : {"1", "3"}) {
    const ProgramEnd end = run(
        {"analyze", "--json", "--jobs", jobs, "good.wav", "missing.wav", "bad.wav", "good.wav"});
    EXPECT_EQ(end.exitCode, 1);
    const auto documents = jsonLines(end.output);
    ASSERT_EQ(documents.size(), 4U);
    EXPECT_TRUE(documents[0].contains("integratedLUFS"));
    EXPECT_EQ(documents[1].dump(),
              R"({"error":"missing.wav: No such file or directory","schemaVersion":1,)"
              R"("url":"missing.wav"})");
    EXPECT_TRUE(documents[2].contains("error"));
    EXPECT_EQ(documents[0], documents[3]);
    EXPECT_THAT(end.errors, HasSubstr("orvane: missing.wav: No such file or directory\norvane: "));
  }
}

TEST_F(ProgramBatch, SumsSeveralFilesUpAtTheEnd) {
  const ProgramEnd end = run({"analyze", "good.wav", "good.wav"});
  EXPECT_EQ(end.exitCode, 0);
  const std::size_t summary = end.output.find("\n  I LUFS  LRA LU");
  ASSERT_NE(summary, std::string::npos);
  const std::size_t rowsEnd = end.output.find("\n\n", summary);
  EXPECT_EQ(std::count(end.output.begin() + static_cast<std::ptrdiff_t>(summary),
                       end.output.begin() + static_cast<std::ptrdiff_t>(rowsEnd), '\n'),
            3);
  EXPECT_EQ(run({"analyze", "good.wav"}).output.find("I LUFS"), std::string::npos);
}

// One second fills a third of the short-term window and is too short for a DR score.
TEST_F(ProgramBatch, PrintsARowPerFileWhenQuiet) {
  const ProgramEnd end = run({"analyze", "-q", "good.wav", "missing.wav", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.output,
            "  I LUFS  LRA LU  M max  S max    dBTP    dBFS  DR     Duration  File\n"
            "    -6.0     0.0   -6.0  -10.8   -6.02   -6.02   0     0:01.000  good.wav\n"
            "    -6.0     0.0   -6.0  -10.8   -6.02   -6.02   0     0:01.000  good.wav\n");
}

TEST_F(ProgramBatch, ReadsNamesFromAFileAndFromStandardInput) {
  const auto names = writeFiles(3);
  const std::string list = names[0] + "\n" + names[1] + "\n\n" + names[2] + "\n";
  folder().write("list", list);
  EXPECT_EQ(namesIn(run({"analyze", "--json", "--files-from", "list"}).output), names);

  ProgramSetup setup;
  setup.arguments = {"identify", "--json", "--files-from", "-"};
  setup.input = names[0] + '\0' + names[1] + '\0' + names[2] + '\0';
  EXPECT_EQ(namesIn(run(setup).output), names);
}

TEST_F(ProgramBatch, DoesNothingForAnEmptyList) {
  ProgramSetup setup;
  setup.arguments = {"analyze", "--files-from", "-"};
  const ProgramEnd end = run(setup);
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, IsEmpty());
  EXPECT_THAT(end.errors, IsEmpty());
}

TEST_F(ProgramBatch, SaysWhyAListCannotBeRead) {
  const ProgramEnd end = run({"analyze", "--files-from", "no list"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: no list: No such file or directory\n");
}

TEST_F(ProgramBatch, MeasuresStandardInput) {
  Json expected = jsonLines(run({"analyze", "--json", "good.wav"}).output).at(0);
  expected["url"] = "-";

  ProgramSetup pipe;
  pipe.arguments = {"analyze", "--json", "-"};
  pipe.input = waveFile(sineSamples(48'000, 0.5));
  EXPECT_EQ(jsonLines(run(pipe).output).at(0), expected);

  ProgramSetup file;
  file.arguments = {"analyze", "--json", "-"};
  file.inputFile = folder() / "good.wav";
  EXPECT_EQ(jsonLines(run(file).output).at(0), expected);
}

TEST_F(ProgramBatch, NamesStandardInputInMessages) {
  ProgramSetup setup;
  setup.arguments = {"analyze", "-"};
  setup.input = "no audio";
  const ProgramEnd end = run(setup);
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("standard input"));
}

TEST_F(ProgramBatch, TakesNamesThatLookLikeOptionsBehindTwoDashes) {
  folder().write("--json", waveFile(sineSamples(4'800, 0.5)));
  const ProgramEnd end = run({"analyze", "-q", "--", "--json"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, HasSubstr("  --json\n"));
}

}  // namespace
}  // namespace orvane::cli::test
