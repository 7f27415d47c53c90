// Takes spliced into recordings by the program.

#include <algorithm>

#include "tests/cli/program_fixture.h"
#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

/// 16-bit samples first, first + 1, …, alike in all channels.
std::string counted(unsigned first, unsigned frames, int channels = 2) {
  std::string samples;
  for (unsigned i = 0; i < frames; ++i)
    for (int c = 0; c < channels; ++c) samples += littleEndian(first + i, 2);
  return samples;
}

class ProgramSplice : public ProgramTest {
 protected:
  ProgramSplice() {
    folder().write("base.wav", waveFile(counted(1'000, 4'800)));
    folder().write("take.wav", waveFile(counted(20'000, 2'400)));
  }

  ProgramEnd splice(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "splice");
    arguments.insert(arguments.end(), {"-o", "out.wav"});
    return run(arguments);
  }

  void expectDone(const std::vector<std::string>& arguments) const {
    const auto end = splice(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.errors, IsEmpty());
  }

  void expectError(int exitCode, const std::vector<std::string>& arguments,
                   const std::string& text) const {
    const auto end = splice(arguments);
    EXPECT_EQ(end.exitCode, exitCode) << text;
    EXPECT_THAT(end.output, IsEmpty());
    EXPECT_THAT(end.errors, StartsWith("orvane: " + text));
    EXPECT_EQ(std::ranges::count(end.errors, '\n'), 1) << end.errors;
    EXPECT_FALSE(std::filesystem::exists(folder() / "out.wav"));
  }

  std::string written() const { return orvane::test::readFile(folder() / "out.wav"); }
};

TEST_F(ProgramSplice, Appends) {
  expectDone({"append", "base.wav", "take.wav", "--crossfade", "0"});
  EXPECT_EQ(written(), waveFile(counted(1'000, 4'800) + counted(20'000, 2'400)));
}

TEST_F(ProgramSplice, Inserts) {
  expectDone({"insert", "--at", "#1000", "base.wav", "take.wav", "--crossfade", "0"});
  EXPECT_EQ(written(),
            waveFile(counted(1'000, 1'000) + counted(20'000, 2'400) + counted(2'000, 3'800)));
}

TEST_F(ProgramSplice, Replaces) {
  expectDone(
      {"replace", "--from", "10ms", "--to", "#4000", "base.wav", "take.wav", "--crossfade", "0"});
  EXPECT_EQ(written(),
            waveFile(counted(1'000, 480) + counted(20'000, 2'400) + counted(5'000, 800)));
}

TEST_F(ProgramSplice, TellsWhatItDid) {
  EXPECT_EQ(splice({"append", "base.wav", "take.wav"}).output,
            "Take of 2,400 frames (0:00.050) at #4800 (0:00.100), crossfades of up to 480 frames "
            "(0:00.010)\n"
            "out.wav: WAV, 16-bit integer, 48 kHz, 2 channels, 0:00.140 (6,720 frames)\n");
  EXPECT_THAT(splice({"insert", "--at", "9", "base.wav", "take.wav", "--force"}).output,
              HasSubstr(" at #4800 (0:00.100), "));
  EXPECT_THAT(
      splice({"replace", "--from", "0", "--to", "#96", "base.wav", "take.wav", "--force"}).output,
      HasSubstr(" in place of #0 to #96 (0:00.000 to 0:00.002), "));
}

TEST_F(ProgramSplice, CrossfadesBothSeamsOfATake) {
  expectDone({"replace", "--from", "#1000", "--to", "#3000", "base.wav", "take.wav"});
  EXPECT_EQ(written().size(), 44U + 4 * (4'800 - 2'000 + 2'400 - 2 * 480));
  const auto audio = orvane::test::readWhole(folder() / "out.wav");
  const auto sampleAt = [&](std::uint32_t frame) { return audio->channel(0)[frame] * 32'768; };
  EXPECT_EQ(sampleAt(519), 1'519);
  EXPECT_EQ(sampleAt(520), 1'520);  // cos 0, sin 0
  EXPECT_NEAR(sampleAt(760), (1'760 + 20'240) * std::numbers::sqrt2 / 2, 1);
  EXPECT_EQ(sampleAt(1'000), 20'480);
  EXPECT_EQ(sampleAt(2'439), 21'919);
  EXPECT_NEAR(sampleAt(2'680), (22'160 + 4'240) * std::numbers::sqrt2 / 2, 1);
  EXPECT_EQ(sampleAt(2'920), 4'480);
}

TEST_F(ProgramSplice, PutsAMonoTakeOnBothChannels) {
  folder().write("mono.wav", waveFile(counted(20'000, 2'400, 1), 1));
  expectDone({"append", "base.wav", "mono.wav", "--crossfade", "0"});
  EXPECT_EQ(written(), waveFile(counted(1'000, 4'800) + counted(20'000, 2'400)));
}

TEST_F(ProgramSplice, AveragesAStereoTakeForAMonoRecording) {
  folder().write("mono.wav", waveFile(counted(1'000, 4'800, 1), 1));
  expectDone({"append", "mono.wav", "take.wav", "--crossfade", "0"});
  EXPECT_EQ(written(), waveFile(counted(1'000, 4'800, 1) + counted(20'000, 2'400, 1), 1));
}

TEST_F(ProgramSplice, BringsATakeToTheRateOfTheRecording) {
  folder().write("slow.wav", waveFile(sineSamples(22'050, 0.5), 2, 44'100));  // 918.75 Hz
  const auto end = splice({"append", "base.wav", "slow.wav", "--json"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  const Json document = Json::parse(end.output);
  EXPECT_EQ(document["takeFrames"], 24'000);
  EXPECT_EQ(document["sampleRate"], 48'000);
  const auto audio = orvane::test::readWhole(folder() / "out.wav");
  for (std::uint32_t i = 4'000; i < 20'000; ++i)
    ASSERT_NEAR(audio->channel(0)[4'320 + i],
                0.5 * std::sin(2 * std::numbers::pi * 918.75 * i / 48'000), 1e-4);
}

TEST_F(ProgramSplice, SaysItAsJSON) {
  const auto end =
      splice({"replace", "--from", "#100", "--to", "#200", "base.wav", "take.wav", "--json"});
  const Json document = Json::parse(end.output);
  EXPECT_EQ(document["source"], "base.wav");
  EXPECT_EQ(document["take"], "take.wav");
  EXPECT_EQ(document["operation"], "replace");
  EXPECT_EQ(document["startFrame"], 100);
  EXPECT_EQ(document["endFrame"], 200);
  EXPECT_EQ(document["takeFrames"], 2'400);
  EXPECT_EQ(document["crossfadeFrames"], 480);
  EXPECT_EQ(document["leftBehind"], Json::array());
  EXPECT_EQ(document["frameCount"], 4'800 - 100 + 2'400 - 100 - 480);
  EXPECT_EQ(document["isDryRun"], false);
}

TEST_F(ProgramSplice, OnlySaysWhatItWouldDo) {
  const auto done = splice({"append", "base.wav", "take.wav"});
  std::filesystem::remove(folder() / "out.wav");
  const auto end = splice({"append", "base.wav", "take.wav", "--dry-run"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  std::string expected = done.output;
  expected.insert(expected.find("out.wav"), "Would write ");
  EXPECT_EQ(end.output, expected);
  EXPECT_FALSE(std::filesystem::exists(folder() / "out.wav"));
}

TEST_F(ProgramSplice, WritesWhatIsAskedFor) {
  EXPECT_THAT(
      splice({"append", "base.wav", "take.wav", "--container", "caf", "--encoding", "f32"}).output,
      HasSubstr("\nout.wav: CAF, 32-bit float, 48 kHz"));
  EXPECT_THAT(splice({"append", "base.wav", "take.wav", "--force", "-q"}).output, IsEmpty());
}

TEST_F(ProgramSplice, TakesAHeaderlessRecording) {
  folder().write("base.raw", counted(1'000, 4'800));
  expectDone({"append", "base.raw", "take.wav", "--raw", "s16le,48000,2", "--crossfade", "0"});
  EXPECT_EQ(written(), waveFile(counted(1'000, 4'800) + counted(20'000, 2'400)));
}

TEST_F(ProgramSplice, WarnsOfOtherLoudspeakers) {
  using namespace orvane::test;
  const auto write = [&](const char* name, std::uint32_t mask) {
    folder().write(
        name, orvane::test::waveFile({.channels = 4, .mask = mask, .validBits = 16}, Bytes(800)));
  };
  write("quad.wav", 0x33);
  write("front.wav", 0x107);
  const auto end = splice({"append", "quad.wav", "front.wav"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.errors,
            "orvane: warning: front.wav: its channels stand for other loudspeakers than those of "
            "quad.wav\n");
}

TEST_F(ProgramSplice, RefusesWhatDoesNotFit) {
  folder().write("four.wav", waveFile(counted(1, 100, 4), 4));
  expectError(1, {"append", "base.wav", "four.wav"},
              "four.wav: A take with 4 channels cannot be spliced into 2 channels");
  folder().write("short.wav", waveFile(counted(1, 1), 2, 192'000));
  expectError(1, {"append", "base.wav", "short.wav"},
              "short.wav: It cannot be converted from 192 kHz to 48 kHz");
  expectError(1, {"replace", "--from", "1", "--to", "2", "base.wav", "take.wav"},
              "base.wav: there is no audio in the range");
  expectError(1, {"append", "base.wav", "missing.wav"}, "missing.wav: No such file");
}

TEST_F(ProgramSplice, WritesOntoNothingThatIsThereOrRead) {
  for (const char* read : {"base.wav", "take.wav"}) {
    const auto before = orvane::test::readFile(folder() / read);
    const auto end = run({"splice", "append", "base.wav", "take.wav", "-o", read, "--force"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("orvane: Refusing to overwrite source file"));
    EXPECT_EQ(orvane::test::readFile(folder() / read), before);
  }
  EXPECT_EQ(run({"splice", "append", "base.wav", "take.wav", "-o", "good.wav"}).errors,
            "orvane: good.wav: File exists; --force replaces it\n");
}

TEST_F(ProgramSplice, AnswersWrongUsageInOneLine) {
  expectError(2, {"mix", "base.wav", "take.wav"}, "unknown command 'mix', the commands are append");
  expectError(2, {"append", "base.wav"}, "TAKE is required");
  expectError(2, {"insert", "base.wav", "take.wav"}, "--at is required");
  expectError(2, {"replace", "--from", "1", "base.wav", "take.wav"}, "--to is required");
  expectError(2, {"replace", "--from", "2", "--to", "1", "base.wav", "take.wav"},
              "the end does not lie behind the start");
  expectError(2, {"insert", "--at", "soon", "base.wav", "take.wav"}, "--at: 'soon' is no time");
  expectError(2, {"append", "base.wav", "take.wav", "--crossfade", "-1"},
              "--crossfade: '-1' is no time");
}

}  // namespace
}  // namespace orvane::cli::test
