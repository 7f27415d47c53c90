#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

/// Noise of 16 bits, alike in all channels; `shift` frames of silence before it.
std::string noiseSamples(std::size_t frames, double amplitude, std::size_t shift = 0,
                         int channels = 2) {
  std::string samples(shift * 2 * static_cast<std::size_t>(channels), '\0');
  std::uint32_t state = 1;
  for (std::size_t i = 0; i < frames; ++i) {
    state = state * 1664525U + 1013904223U;
    const double x = (static_cast<double>(state >> 8U) / (1 << 23) - 1) * amplitude * 32767;
    for (int channel = 0; channel < channels; ++channel)
      samples += littleEndian(static_cast<std::uint16_t>(std::lround(x)), 2);
  }
  return samples;
}

class ProgramDiff : public ProgramTest {
 protected:
  ProgramDiff() {
    folder().write("a.wav", waveFile(noiseSamples(48000, 0.5)));
    folder().write("half.wav", waveFile(noiseSamples(48000, 0.25)));
    folder().write("late.wav", waveFile(noiseSamples(48000, 0.5, 480)));
  }

  ProgramEnd diff(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "diff");
    return run(arguments);
  }
};

TEST_F(ProgramDiff, FindsAFileEqualToItself) {
  const ProgramEnd end = diff({"a.wav", "a.wav", "--match-loudness", "--at-most", "-200"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.errors, "");
  EXPECT_EQ(end.output,
            "a.wav - a.wav\n"
            "  Residual  peak -inf dBFS, RMS -200.00 dBFS\n"
            "  Null      exact: not one sample differs\n"
            "  Compared  0:01.000 (48,000 frames), 48 kHz, 2 channels\n");
}

TEST_F(ProgramDiff, SaysHowDeepTheNullIs) {
  const ProgramEnd plain = diff({"a.wav", "half.wav"});
  EXPECT_THAT(plain.output, HasSubstr("shallow: what differs lies 6.0 dB below A"));
  EXPECT_THAT(plain.output, Not(HasSubstr("Gain of B")));
  const ProgramEnd matched = diff({"a.wav", "half.wav", "--match-loudness"});
  EXPECT_THAT(matched.output, HasSubstr("Null       deep: what differs lies 82.6 dB below A"));
  EXPECT_THAT(matched.output, HasSubstr("Gain of B  +6.02 dB"));
  std::string step = waveFile(noiseSamples(48000, 0.5));
  step[1000] = static_cast<char>(step[1000] ^ 1);  // the lower byte of one sample
  folder().write("step.wav", step);
  EXPECT_THAT(diff({"a.wav", "step.wav"}).output,
              HasSubstr("very deep: nothing above one step of 16 bits"));
  EXPECT_THAT(diff({"half.wav", "a.wav"}).output, HasSubstr("Null      none: "));
}

TEST_F(ProgramDiff, SuggestsTheOffsetOfShiftedFiles) {
  const ProgramEnd end = diff({"a.wav", "late.wav"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, HasSubstr("B comes 480 frames (10.000 ms) later than A"));
  EXPECT_EQ(end.errors,
            "orvane: warning: late.wav is longer by 480 frames, which are not compared\n");
  const Json figures = Json::parse(diff({"late.wav", "a.wav", "--json"}).output);
  EXPECT_EQ(figures["offsetFrames"], -480);
  EXPECT_EQ(figures["offsetSeconds"], -0.01);
  EXPECT_GT(figures["offsetCorrelation"], 0.9);
}

TEST_F(ProgramDiff, GivesTheFiguresAsJSON) {
  const ProgramEnd end =
      diff({"a.wav", "half.wav", "--json", "--at-most", "-3", "-o", "residual.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  const Json figures = Json::parse(end.output);
  EXPECT_EQ(figures["fileA"], "a.wav");
  EXPECT_EQ(figures["fileB"], "half.wav");
  EXPECT_EQ(figures["sampleRate"], 48000);
  EXPECT_EQ(figures["channelCount"], 2);
  EXPECT_EQ(figures["durationSeconds"], 1);
  EXPECT_EQ(figures["appliedGainB"], 1);
  EXPECT_NEAR(figures["residualPeakDB"].get<double>(), -12.04, 0.01);
  EXPECT_NEAR(figures["rmsDBOfA"].get<double>() - figures["residualRMSDB"].get<double>(), 6.02,
              0.01);
  EXPECT_EQ(figures["isAtMost"], true);
  EXPECT_EQ(figures["residualFile"], "residual.wav");
  EXPECT_FALSE(figures.contains("offsetFrames"));
  const Json exact = Json::parse(diff({"a.wav", "a.wav", "--json"}).output);
  EXPECT_TRUE(exact["residualPeakDB"].is_null());
  EXPECT_EQ(exact["residualRMSDB"], -200);
}

TEST_F(ProgramDiff, ExitsWith3AboveTheLimit) {
  const ProgramEnd end = diff({"a.wav", "half.wav", "--at-most", "-60", "-q"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_EQ(end.output, "");
  EXPECT_EQ(end.errors,
            "orvane: the residual reaches -12.04 dBFS, at most -60 dBFS is asked for\n");
  EXPECT_EQ(diff({"a.wav", "half.wav", "--at-most", "-12", "-q"}).exitCode, 0);
}

TEST_F(ProgramDiff, WhatIsNoNumberIsNoNull) {
  folder().write("nan.raw", littleEndian(0x7FC00000, 4) + littleEndian(0, 4));
  const ProgramEnd end = diff({"nan.raw", "nan.raw", "--raw", "f32le,48000,1", "--at-most", "0"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_THAT(end.output, HasSubstr("cannot be judged"));
}

TEST_F(ProgramDiff, WritesTheResidual) {
  EXPECT_EQ(diff({"a.wav", "half.wav", "-o", "r.wav", "-q"}).exitCode, 0);
  const Json same = Json::parse(diff({"r.wav", "half.wav", "--json"}).output);
  EXPECT_LT(same["residualRMSDB"].get<double>(), -90);
  const ProgramEnd again = diff({"a.wav", "half.wav", "-o", "r.wav"});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_THAT(again.errors, HasSubstr("--force replaces it"));
  EXPECT_EQ(diff({"a.wav", "half.wav", "-o", "r.wav", "--force"}).exitCode, 0);
}

TEST_F(ProgramDiff, NeverWritesOntoWhatItReads) {
  const std::string before = orvane::test::readFile(folder() / "half.wav");
  for (const char* name : {"a.wav", "./half.wav"})
    EXPECT_EQ(diff({"a.wav", "half.wav", "-o", name, "--force"}).exitCode, 1);
  EXPECT_EQ(orvane::test::readFile(folder() / "half.wav"), before);
}

TEST_F(ProgramDiff, ReadsHeaderlessFilesOnEitherSide) {
  folder().write("a.raw", noiseSamples(48000, 0.5));
  const auto isExact = [&](std::vector<std::string> arguments) {
    const ProgramEnd end = diff(std::move(arguments));
    EXPECT_EQ(end.errors, "");
    return end.output.find("exact") != std::string::npos;
  };
  EXPECT_TRUE(isExact({"a.raw", "a.raw", "--raw", "s16le,48000,2"}));
  EXPECT_TRUE(isExact({"a.raw", "a.wav", "--raw-a", "s16le,48000,2"}));
  EXPECT_TRUE(isExact({"a.wav", "a.raw", "--raw-b", "s16le,48000,2"}));
}

TEST_F(ProgramDiff, WarnsWhenTheLayoutsDiffer) {
  const std::string samples = noiseSamples(4800, 0.5, 0, 4);
  folder().write("four.raw", samples);
  run({"raw", "convert", "four.raw", "--raw", "s16le,48000,4", "-o", "four.wav"});
  // Extensible, with the mask of L R C Cs.
  std::string quad = waveFile(samples, 4);
  quad.replace(12, 24,
               "fmt " + littleEndian(40, 4) + littleEndian(0xFFFE, 2) + quad.substr(22, 14) +
                   littleEndian(22, 2) + littleEndian(16, 2) + littleEndian(0x107, 4) +
                   littleEndian(1, 2) +
                   std::string("\0\0\0\0\x10\0\x80\0\0\xAA\0\x38\x9B\x71", 14));
  folder().write("quad.wav", quad);
  const ProgramEnd end = diff({"four.wav", "quad.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.errors, HasSubstr("the layouts differ: "));
  EXPECT_THAT(end.errors, HasSubstr(" in A, L R C Cs in B; channels are compared"));
}

TEST_F(ProgramDiff, SaysWhatIsWrongInOneSentence) {
  folder().write("mono.wav", waveFile(noiseSamples(480, 0.5, 0, 1), 1));
  folder().write("cd.wav", waveFile(noiseSamples(480, 0.5), 2, 44100));
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string text;
  } kCases[] = {
      {{"mono.wav", "a.wav"},
       1,
       "Channel count mismatch: A has 1 channels, B has 2. Downmix to match before diffing."},
      {{"cd.wav", "a.wav"},
       1,
       "Sample rate mismatch: A is 44100.0 Hz, B is 48000.0 Hz. Resample to match before diffing."},
      {{"none.wav", "a.wav"}, 1, "none.wav"},
      {{"a.wav", "none.wav"}, 1, "none.wav"},
      {{"a.wav"}, 2, "B is required"},
      {{"a.wav", "a.wav", "--at-most", "x"}, 2, "--at-most takes a number"},
      {{"a.wav", "a.wav", "-o", "r.caf"}, 2, "written as WAV, not as .caf"},
      {{"a.wav", "a.wav", "--raw", "s16le,48000,2", "--raw-a", "s16le,48000,2"}, 2, "one each"},
      {{"a.wav", "a.wav", "--raw-b", "s17"}, 2, "unknown encoding"},
      {{"a.wav", "a.wav", "--preset-a", "none"}, 2, "--preset-a: there is none called 'none'"},
      {{"a.wav", "a.wav", "--raw-b", "s16le,48000,2", "--preset-b", "none"}, 2, "--preset-b"}};
  for (const auto& c : kCases) {
    const ProgramEnd end = diff(c.arguments);
    EXPECT_EQ(end.exitCode, c.exitCode) << c.text;
    EXPECT_THAT(end.errors, HasSubstr(c.text));
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
  }
}

}  // namespace
}  // namespace orvane::cli::test
