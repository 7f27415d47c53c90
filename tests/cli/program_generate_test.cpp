#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class ProgramGenerate : public ProgramTest {
 protected:
  Json identified(const std::string& file) const {
    const ProgramEnd end = run({"identify", "--json", file});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }
  Json analyzed(const std::string& file) const {
    const ProgramEnd end = run({"analyze", "--json", file});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }
};

TEST_F(ProgramGenerate, WritesTheDefaultTone) {
  const ProgramEnd end = run({"generate", "sine", "-o", "tone.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.output,
            "tone.wav: WAV, 24-bit integer, 48 kHz, 1 channel, 0:10.000 (480,000 frames)\n"
            "Peak -20.00 dBFS, RMS -23.01 dBFS, integrated -23.00 LUFS\n");
  EXPECT_EQ(end.errors, "");
  const Json figures = analyzed("tone.wav");
  EXPECT_NEAR(figures["truePeakDB"].get<double>(), -20.0, 0.01);
  EXPECT_NEAR(figures["integratedLUFS"].get<double>(), -23.0, 0.05);
}

TEST_F(ProgramGenerate, WritesEverySignal) {
  for (const char* signal : {"sine", "dual", "square", "saw", "triangle", "sweep", "white", "pink",
                             "brown", "impulse", "clicks", "silence", "ident"}) {
    const std::string file = std::string(signal) + ".caf";
    const ProgramEnd end = run({"generate", signal, "-o", file, "--channels", "2", "--duration",
                                "2", "--bit-depth", "float32", "-q"});
    EXPECT_EQ(end.exitCode, 0) << signal << ": " << end.errors;
    EXPECT_EQ(end.output, "");
    const Json about = identified(file);
    EXPECT_EQ(about["channelCount"], 2) << signal;
    EXPECT_EQ(about["encodingName"], "32-bit float") << signal;
  }
}

TEST_F(ProgramGenerate, GoesByTheNameOfTheOutput) {
  for (const auto& [file, label] : {std::pair("a.wav", "WAV"), std::pair("a.aif", "AIFF"),
                                    std::pair("a.caf", "CAF"), std::pair("a.xyz", "WAV")}) {
    const ProgramEnd end = run({"generate", "silence", "-o", file, "--duration", "0.1"});
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.output, StartsWith(std::string(file) + ": " + label + ", 24-bit integer"));
  }
  const ProgramEnd end =
      run({"generate", "silence", "-o", "b.wav", "--duration", "0.1", "--container", "caf"});
  EXPECT_THAT(end.output, StartsWith("b.wav: CAF"));
}

TEST_F(ProgramGenerate, TellsWhatItWroteAsJSON) {
  const ProgramEnd end = run({"generate", "sine", "-o", "a.wav", "--json", "--level", "-6",
                              "--duration", "1", "--rate", "44100"});
  const Json document = Json::parse(end.output);
  EXPECT_EQ(document["schemaVersion"], 1);
  EXPECT_NEAR(document["peakDB"].get<double>(), -6, 0.01);
  EXPECT_EQ(document["file"], "a.wav");
  EXPECT_EQ(document["containerName"], "WAV");
  EXPECT_EQ(document["encodingName"], "24-bit integer");
  EXPECT_EQ(document["sampleRate"], 44100);
  EXPECT_EQ(document["channelCount"], 1);
  EXPECT_EQ(document["frameCount"], 44100);
  EXPECT_EQ(document["isDryRun"], false);
}

TEST_F(ProgramGenerate, GivesTheSameNoiseForTheSameSeed) {
  for (const char* name : {"a.wav", "b.wav", "c.wav"})
    EXPECT_EQ(run({"generate", "pink", "-o", name, "--duration", "1", "-q", "--seed",
                   name[0] == 'c' ? "2" : "1"})
                  .exitCode,
              0);
  const auto content = [&](const char* name) { return orvane::test::readFile(folder() / name); };
  EXPECT_EQ(content("a.wav"), content("b.wav"));
  EXPECT_NE(content("a.wav"), content("c.wav"));
}

TEST_F(ProgramGenerate, WritesNothingWhenOnlyAsked) {
  const ProgramEnd end = run({"generate", "sine", "-o", "a.wav", "--dry-run"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, StartsWith("Would write a.wav: WAV"));
  EXPECT_FALSE(std::filesystem::exists(folder() / "a.wav"));
}

TEST_F(ProgramGenerate, ReplacesOnlyByForce) {
  folder().write("a.wav", "old");
  const ProgramEnd refused = run({"generate", "sine", "-o", "a.wav"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.errors, "orvane: a.wav: File exists; --force replaces it\n");
  EXPECT_EQ(orvane::test::readFile(folder() / "a.wav"), "old");
  EXPECT_EQ(run({"generate", "sine", "-o", "a.wav", "--force", "-q"}).exitCode, 0);
  EXPECT_GT(std::filesystem::file_size(folder() / "a.wav"), 1000U);
}

TEST_F(ProgramGenerate, SaysWhatIsWrongInOneSentence) {
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string text;
  } kCases[] = {
      {{"sine"}, 2, "-o"},
      {{"hum", "-o", "a.wav"}, 2, "unknown name 'hum'"},
      {{"sine", "-o", "a.wav", "--frequency", "24000"}, 2, "half the sample rate"},
      {{"sine", "-o", "a.wav", "--frequency", "nan"}, 2, "--frequency"},
      {{"sine", "-o", "a.wav", "--from", "20"}, 2, "--from and --to are for a sweep"},
      {{"sine", "-o", "a.wav", "--linear"}, 2, "--linear is for a sweep"},
      {{"sweep", "-o", "a.wav", "--frequency", "20"}, 2, "--frequency is for one tone"},
      {{"sine", "-o", "a.wav", "--channels", "0"}, 2, "--channels"},
      {{"sine", "-o", "a.wav", "--duration", "0"}, 2, "The duration must be above 0 seconds."},
      {{"ident", "-o", "a.wav", "--channels", "8", "--duration", "1"}, 2, "The duration must be"},
      {{"white", "-o", "a.wav", "--duration", "20000", "--channels", "1024"},
       1,
       "the signal is too long for this machine's memory"},
      {{"sine", "-o", "a.aiff", "--bit-depth", "float32"},
       1,
       "AIFF stores integer PCM only. Pick 16- or 24-bit"},
      {{"sine", "-o", "no/a.wav"}, 1, "there is no folder \"no\""},
      {{"sine", "-o", "a.wav", "--bit-depth", "int8"}, 2, "unknown name 'int8'"}};
  for (const auto& c : kCases) {
    std::vector<std::string> arguments = {"generate"};
    arguments.insert(arguments.end(), c.arguments.begin(), c.arguments.end());
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, c.exitCode) << c.text;
    EXPECT_THAT(end.errors, HasSubstr(c.text));
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
    EXPECT_FALSE(std::filesystem::exists(folder() / "a.wav"));
  }
}

}  // namespace
}  // namespace orvane::cli::test
