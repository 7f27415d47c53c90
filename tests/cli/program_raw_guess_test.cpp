#include <algorithm>
#include <set>

#include "tests/cli/program_fixture.h"
#include "tests/support/test_places.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

class ProgramRawGuess : public ProgramTest {
 protected:
  /// Stereo of 16 bits with a header of 512 bytes.
  ProgramRawGuess() {
    folder().write("take.raw", std::string(512, 'x') + sineSamples(48'000, 0.5));
  }

  ProgramEnd guess(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"raw", "guess"});
    return run(arguments);
  }
  Json found(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    const ProgramEnd end = guess(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }
};

TEST_F(ProgramRawGuess, RanksShowsAndSaysHowToGoOn) {
  const ProgramEnd end = guess({"take.raw", "--rate", "48000", "--channels", "2", "--skip", "512"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(end.errors, "");
  EXPECT_THAT(end.output,
              HasSubstr("   #  Encoding  Channels   Score  Duration  Waveform\n"
                        "   1  s16le            2   0.991  0:01.000  ▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇▇\n"));
  EXPECT_THAT(end.output, HasSubstr("\n  13  "));
  EXPECT_THAT(end.output, HasSubstr("\ns16le is likely, 0.026 ahead of s24_32be.\n"));
  EXPECT_THAT(end.output, Not(HasSubstr("cannot be told")));
  EXPECT_THAT(end.output, EndsWith("\norvane analyze take.raw --raw s16le,48000,2,skip=512\n"));
}

TEST_F(ProgramRawGuess, PrintsACommandThatWorks) {
  folder().write("it's a take.raw", sineSamples(48'000, 0.5));
  const ProgramEnd end = guess({"it's a take.raw", "--channels", "2"});
  std::string command = end.output.substr(end.output.rfind("orvane analyze"));
  EXPECT_EQ(command, "orvane analyze 'it'\\''s a take.raw' --raw s16le,48000,2\n");
  ProgramSetup shell;
  shell.folder = folder().path();
  shell.arguments = {
      "-c", "PATH=" + std::filesystem::path(orvane::test::places::program).parent_path().string() +
                ":$PATH; " + command};
  const ProgramEnd analyzed = orvane::test::runProgram("/bin/sh", shell);
  EXPECT_EQ(analyzed.exitCode, 0) << analyzed.errors;
  EXPECT_THAT(analyzed.output, HasSubstr("s16le"));
}

TEST_F(ProgramRawGuess, GivesEveryProposalToMachines) {
  const Json document = found({"take.raw", "--rate", "44100", "--channels", "2", "--skip", "512"});
  EXPECT_EQ(document["schemaVersion"], 1);
  EXPECT_EQ(document["url"], "take.raw");
  EXPECT_EQ(document["isRateKnown"], true);
  EXPECT_EQ(document["isSilent"], false);
  ASSERT_EQ(document["candidates"].size(), 13U);
  const Json& best = document["candidates"][0];
  EXPECT_EQ(best["token"], "s16le");
  EXPECT_NEAR(best["score"].get<double>(), std::cos(2 * std::numbers::pi / 48), 1e-3);
  EXPECT_NEAR(best["durationSeconds"].get<double>(), 48'000.0 / 44'100, 1e-9);
  EXPECT_EQ(best["format"], Json::parse(R"({"sampleRate":44100,"channelCount":2,)"
                                        R"("encoding":"int16","endianness":"little",)"
                                        R"("isPlanar":false,"headerSkipBytes":512,)"
                                        R"("trailingBytesTolerance":0})"));
  double last = 2;
  for (const Json& each : document["candidates"]) {
    EXPECT_LE(each["score"].get<double>(), last);
    last = each["score"].get<double>();
  }
}

TEST_F(ProgramRawGuess, TriesTheUsualChannelCountsAndLetsARateStandIn) {
  std::string samples;  // of a slow ramp in one channel
  for (int i = 0; i < 48'000; ++i)
    samples += littleEndian(static_cast<unsigned>(i * 7) & 0x3FFFU, 2);
  folder().write("mono.raw", samples);
  const Json document = found({"mono.raw"});
  EXPECT_EQ(document["isRateKnown"], false);
  EXPECT_EQ(document["candidates"][0]["token"], "s16le");
  EXPECT_EQ(document["candidates"][0]["format"]["channelCount"], 1);
  EXPECT_EQ(document["candidates"][0]["format"]["sampleRate"], 48000);
  std::set<int> counts;
  for (const Json& each : document["candidates"])
    counts.insert(each["format"]["channelCount"].get<int>());
  EXPECT_THAT(counts, ElementsAre(1, 2, 4, 6, 8));
  const ProgramEnd table = guess({"mono.raw"});
  EXPECT_THAT(table.output, HasSubstr("more, which --json lists\n"));
  EXPECT_THAT(table.output, HasSubstr("s16le in 1 channel is "));
  EXPECT_THAT(table.output, HasSubstr("equal ones look like fewer"));
  EXPECT_THAT(table.output, HasSubstr("The rate cannot be told from the bytes; 48 kHz stands in"));
}

TEST_F(ProgramRawGuess, PassesOverLeadingSilence) {
  folder().write("late.raw", std::string(4 * 240'000, '\0') + sineSamples(48'000, 0.5));
  const Json best = found({"late.raw", "--channels", "2"})["candidates"][0];
  EXPECT_EQ(best["token"], "s16le");
  EXPECT_EQ(best["format"]["headerSkipBytes"], 0) << "the one that was given";
  EXPECT_EQ(best["durationSeconds"], 6);
}

TEST_F(ProgramRawGuess, SaysThatSilenceTellsNothing) {
  folder().write("silent.raw", std::string(48'000, '\0'));
  const ProgramEnd end = guess({"silent.raw", "--channels", "1"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.errors, HasSubstr("warning: silent.raw: all bytes are alike"));
  EXPECT_THAT(end.output, HasSubstr("u8 is a guess, "));
}

TEST_F(ProgramRawGuess, SaysWhenEncodingsAreAlike) {
  std::string samples;  // 24 bits in 32, whose sign the upper byte repeats
  for (int i = 0; i < 24'000; ++i)
    samples += littleEndian(static_cast<std::uint32_t>((i % 100 - 50) * 10'000), 4);
  folder().write("wide.raw", samples);
  EXPECT_THAT(guess({"wide.raw", "--channels", "1"}).output,
              HasSubstr("s24_32le is likely, and s32le has the same score.\n"));
}

TEST_F(ProgramRawGuess, FailsForWhatCannotBe) {
  folder().write("odd.raw", "12345");
  const auto error = [&](const std::vector<std::string>& arguments) {
    const ProgramEnd end = guess(arguments);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_EQ(end.output, "");
    return end.errors;
  };
  EXPECT_EQ(error({"odd.raw", "--channels", "2"}),
            "orvane: odd.raw: no encoding fits its size of 5 bytes\n");
  EXPECT_EQ(error({"odd.raw", "--channels", "1", "--skip", "5"}),
            "orvane: odd.raw: no encoding fits its size of 5 bytes\n");
  EXPECT_EQ(error({"missing.raw"}), "orvane: missing.raw: No such file or directory\n");
  EXPECT_EQ(error({"."}), "orvane: .: Is a directory\n");
}

TEST_F(ProgramRawGuess, RefusesWrongNumbers) {
  for (const auto& [option, value] : {std::pair{"--rate", "0"},
                                      {"--rate", "x"},
                                      {"--channels", "0"},
                                      {"--channels", "65"},
                                      {"--skip", "-1"},
                                      {"--preview", "0"},
                                      {"--preview", "61"}})
    EXPECT_EQ(guess({"take.raw", option, value}).exitCode, 2) << option << value;
}

}  // namespace
}  // namespace orvane::cli::test
