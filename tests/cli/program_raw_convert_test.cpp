#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class ProgramRawConvert : public ProgramTest {
 protected:
  ProgramRawConvert() { folder().write("take.raw", sineSamples(4800, 0.5)); }

  ProgramEnd convert(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"raw", "convert"});
    return run(arguments);
  }
  std::string content(const std::string& name) const {
    return orvane::test::readFile(folder() / name);
  }
};

TEST_F(ProgramRawConvert, GivesTheSamplesAHeader) {
  const ProgramEnd end =
      convert({"take.raw", "--raw", "s16le", "--rate", "48000", "--channels", "2", "-o", "a.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.output,
            "a.wav: WAV, 16-bit integer, 48 kHz, 2 channels, 0:00.100 (4,800 frames)\n");
  EXPECT_EQ(content("a.wav"), waveFile(sineSamples(4800, 0.5)));
}

TEST_F(ProgramRawConvert, WritesEveryContainerInEveryEncoding) {
  for (const char* container : {"wav", "rf64", "bw64", "w64", "aiff", "aifc", "caf"})
    for (const char* encoding : {"u8", "s16", "s24", "s32", "f32", "f64"}) {
      const ProgramEnd end =
          convert({"take.raw", "--raw", "s16le,48000,2", "-o", "a", "--container", container,
                   "--encoding", encoding, "--force", "--json"});
      if (std::string(container) == "aiff" && encoding[0] == 'f') {
        EXPECT_EQ(end.exitCode, 1);
        EXPECT_EQ(end.errors,
                  "orvane: a: AIFF stores integer PCM only; AIFF-C and CAF store "
                  "floating point too\n");
        continue;
      }
      ASSERT_EQ(end.exitCode, 0) << container << encoding << end.errors;
      const ProgramEnd measured = run({"analyze", "--json", "a"});
      const Json figures = Json::parse(measured.output);
      EXPECT_NEAR(figures["samplePeakDB"].get<double>(), -6.02,
                  std::string(encoding) == "u8" ? 0.1 : 0.01)
          << container << encoding;
    }
}

TEST_F(ProgramRawConvert, FloatsInAnAIFFBecomeAIFFC) {
  folder().write("float.raw", std::string(4000, '\0'));
  const ProgramEnd end = convert({"float.raw", "--raw", "f32le,48000,1", "-o", "a.aiff"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, StartsWith("a.aiff: AIFF-C, 32-bit float"));
}

TEST_F(ProgramRawConvert, CountsWhatWasClippedAndWhatIsNoNumber) {
  const auto bits = [](std::uint32_t word) { return littleEndian(word, 4); };
  folder().write("hot.raw", bits(0x40000000) + bits(0xC0000000) + bits(0x7FC00000) +
                                bits(0x7F800000) + bits(0x3F000000));  // 2 −2 NaN ∞ 0.5
  const ProgramEnd end =
      convert({"hot.raw", "--raw", "f32le,48000,1", "-o", "a.wav", "--encoding", "s16", "--json"});
  const Json document = Json::parse(end.output);
  EXPECT_EQ(document["clippedSamples"], 2);
  EXPECT_EQ(document["nonFiniteSamples"], 2);
  EXPECT_EQ(end.errors,
            "orvane: warning: a.wav: 2 samples clipped\n"
            "orvane: warning: a.wav: 2 samples without a finite value\n");
}

TEST_F(ProgramRawConvert, DithersOnRequest) {
  const auto write = [&](std::vector<std::string> more) {
    std::vector<std::string> arguments = {
        "take.raw", "--raw", "s16le,48000,2", "-o", "a.wav", "--force", "--encoding", "u8", "-q"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    EXPECT_EQ(convert(arguments).exitCode, 0);
    return content("a.wav");
  };
  const std::string plain = write({});
  const std::string dithered = write({"--dither", "tpdf"});
  EXPECT_NE(plain, dithered);
  EXPECT_EQ(dithered, write({"--dither", "tpdf"}));
  EXPECT_EQ(plain.size(), dithered.size());
}

TEST_F(ProgramRawConvert, NeverWritesOntoWhatItReads) {
  for (const bool force : {false, true}) {
    std::vector<std::string> arguments = {"take.raw", "--raw", "s16le,48000,2", "-o", "./take.raw"};
    if (force) arguments.emplace_back("--force");
    const ProgramEnd end = convert(arguments);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(content("take.raw"), sineSamples(4800, 0.5));
  }
  std::filesystem::create_hard_link(folder() / "take.raw", folder() / "other.raw");
  EXPECT_EQ(convert({"take.raw", "--raw", "s16le,48000,2", "-o", "other.raw", "--force"}).exitCode,
            1);
  EXPECT_EQ(content("take.raw"), sineSamples(4800, 0.5));
}

TEST_F(ProgramRawConvert, SaysWhatIsWrongInOneSentence) {
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string text;
  } kCases[] = {
      {{"take.raw", "-o", "a.wav"}, 2, "--raw is missing; it says how FILE is encoded"},
      {{"take.raw", "--raw", "s16le,48000,2"}, 2, "-o"},
      {{"none.raw", "--raw", "s16le,48000,2", "-o", "a.wav"}, 1, "none.raw"},
      {{"take.raw", "--raw", "s24le,48000,7", "-o", "a.wav"}, 1, "doesn't fit the declared format"},
      {{"take.raw", "--raw", "s16le,44100.5,2", "-o", "a.wav"}, 1, "whole sample rates only"},
      {{"take.raw", "--raw", "s16le,48000,2", "-o", "a.wav", "--encoding", "s20"}, 2, "'s20'"},
      {{"take.raw", "--raw", "s16le,48000,2", "-o", "a.wav", "--container", "mp3"}, 2, "'mp3'"},
      {{"take.raw", "--raw", "s16le,48000,2", "-o", "a.wav", "--dither", "rpdf"}, 2, "'rpdf'"}};
  for (const auto& c : kCases) {
    const ProgramEnd end = convert(c.arguments);
    EXPECT_EQ(end.exitCode, c.exitCode) << c.text;
    EXPECT_THAT(end.errors, HasSubstr(c.text));
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
    EXPECT_FALSE(std::filesystem::exists(folder() / "a.wav"));
  }
}

}  // namespace
}  // namespace orvane::cli::test
