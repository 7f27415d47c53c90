// Edits of files by the program.

#include <algorithm>
#include <cstdint>
#include <filesystem>

#include "orvane/container/audio_file.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using Channels = std::vector<std::vector<float>>;

/// A second of stereo whose frames can be told apart: 16-bit counters, one going down.
std::string countedWave() {
  std::string samples;
  for (unsigned i = 0; i < 48'000; ++i)
    samples += littleEndian(i % 30'000, 2) + littleEndian((0x10000 - i % 30'000) & 0xFFFF, 2);
  return waveFile(samples);
}

class ProgramEdit : public ProgramTest {
 protected:
  ProgramEdit() { folder().write("in.wav", countedWave()); }

  ProgramEnd edit(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "edit");
    return run(arguments);
  }

  void expectDone(const std::vector<std::string>& arguments) const {
    const auto end = edit(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_THAT(end.errors, IsEmpty());
  }

  void expectUsageError(const std::vector<std::string>& arguments, const std::string& text) const {
    const auto end = edit(arguments);
    EXPECT_EQ(end.exitCode, 2) << text;
    EXPECT_THAT(end.output, IsEmpty());
    EXPECT_THAT(end.errors, StartsWith("orvane: " + text));
    EXPECT_EQ(std::ranges::count(end.errors, '\n'), 1) << end.errors;
    expectNothingWritten();
  }

  void expectFailure(const std::vector<std::string>& arguments, const std::string& text) const {
    const auto end = edit(arguments);
    EXPECT_EQ(end.exitCode, 1) << text;
    EXPECT_EQ(end.errors, "orvane: " + text + "\n");
    EXPECT_THAT(end.output, IsEmpty());
    expectNothingWritten();
  }

  void expectNothingWritten() const { EXPECT_FALSE(std::filesystem::exists(folder() / "out.wav")); }

  /// Samples times 32,768.
  Channels read(const std::string& name) const {
    const auto buffer = orvane::test::readWhole(folder() / name);
    Channels channels;
    for (std::uint32_t c = 0; c < buffer->channelCount(); ++c)
      for (auto& channel = channels.emplace_back(); const float x : buffer->view().samples(c))
        channel.push_back(x * 32'768);
    return channels;
  }
};

TEST_F(ProgramEdit, TrimsToTheFrame) {
  const auto end = edit({"trim", "0.25", "#24000", "in.wav", "-o", "out.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, StartsWith("Trim: #12000 to #24000 (0:00.250 to 0:00.500)\n"));
  EXPECT_THAT(end.output, HasSubstr("\nIntegrated -"));
  EXPECT_THAT(end.output, EndsWith("out.wav: WAV, 16-bit integer, 48 kHz, 2 channels, 0:00.250 "
                                   "(12,000 frames)\n"));
  const auto result = read("out.wav");
  ASSERT_EQ(result[0].size(), 12'000U);
  for (std::size_t i = 0; i < 12'000; ++i) ASSERT_EQ(result[0][i], static_cast<float>(12'000 + i));
}

TEST_F(ProgramEdit, Cuts) {
  expectDone({"cut", "100ms", "200ms", "in.wav", "-o", "out.wav", "--crossfade", "0"});
  const auto result = read("out.wav");
  ASSERT_EQ(result[0].size(), 43'200U);
  EXPECT_EQ(result[0][4'799], 4'799);
  EXPECT_EQ(result[0][4'800], 9'600);

  const auto end = edit({"cut", "0.1", "0.2", "in.wav", "-o", "faded.wav"});
  EXPECT_THAT(end.output, StartsWith("Cut: #4800 to #9600 (0:00.100 to 0:00.200), crossfade of "
                                     "480 frames (0:00.010)\n"));
  EXPECT_EQ(read("faded.wav")[0].size(), 42'720U);
}

TEST_F(ProgramEdit, AddsSilence) {
  expectDone({"silence", "before", "#10", "in.wav", "-o", "before.wav", "--length", "#5"});
  auto result = read("before.wav");
  EXPECT_EQ(result[0].size(), 48'005U);
  EXPECT_EQ(result[0][9], 9);
  EXPECT_EQ(result[0][14], 0);
  EXPECT_EQ(result[0][15], 10);

  expectDone({"silence", "after", "#10", "#20", "in.wav", "-o", "after.wav", "--length", "#5"});
  EXPECT_EQ(read("after.wav")[0][25], 20);
  expectDone({"silence", "before", "#10", "#20", "in.wav", "-o", "two.wav", "--length", "#5"});
  EXPECT_EQ(read("two.wav")[0][15], 10);

  expectDone({"silence", "replace", "#10", "#20", "in.wav", "-o", "replaced.wav"});
  result = read("replaced.wav");
  EXPECT_EQ(result[0].size(), 48'000U);
  EXPECT_EQ(result[0][9], 9);
  EXPECT_EQ(result[0][19], 0);
  EXPECT_EQ(result[0][20], 20);
}

TEST_F(ProgramEdit, FadesAndChangesLevels) {
  expectDone({"fade", "in", "#0", "#11", "in.wav", "-o", "in11.wav", "--encoding", "f32"});
  EXPECT_FLOAT_EQ(read("in11.wav")[0][5], 2.5);
  expectDone({"fade", "out", "#0", "#11", "in.wav", "-o", "out11.wav", "--curve", "equal-power",
              "--encoding", "f32"});
  EXPECT_NEAR(read("out11.wav")[0][5], 5 * std::sqrt(0.5), 1e-5);
  expectDone({"gain", "-6.0206", "in.wav", "-o", "gain.wav", "--from", "#100", "--to", "#200",
              "--encoding", "f32"});
  const auto result = read("gain.wav");
  EXPECT_EQ(result[0][99], 99);
  EXPECT_NEAR(result[0][150], 75, 1e-3);
  EXPECT_EQ(result[0][200], 200);
  expectDone({"gain", "-.5", "in.wav", "-o", "half.wav", "-q"});
  expectDone({"invert", "in.wav", "-o", "inverted.wav"});
  EXPECT_EQ(read("inverted.wav")[0][7], -7);
  expectDone({"dc", "in.wav", "-o", "dc.wav", "--from", "#1", "--to", "#4"});
  EXPECT_EQ(read("dc.wav")[0][1], -1);
  EXPECT_EQ(read("dc.wav")[0][4], 4);
}

TEST_F(ProgramEdit, SwapsAndSplitsChannels) {
  expectDone({"swap", "in.wav", "-o", "swapped.wav"});
  const auto source = read("in.wav");
  EXPECT_EQ(read("swapped.wav"), (Channels{source[1], source[0]}));
  const auto end = edit({"split", "in.wav", "-o", "one.two.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(read("one.two.L.wav"), Channels{source[0]});
  EXPECT_EQ(read("one.two.R.wav"), Channels{source[1]});
  EXPECT_FALSE(std::filesystem::exists(folder() / "one.two.wav"));
}

TEST_F(ProgramEdit, BringsThePeakToALevel) {
  expectDone({"peak", "-6.0206", "good.wav", "-o", "out.wav"});
  const auto peak = std::ranges::max(read("out.wav")[0]);
  EXPECT_NEAR(peak, 16'384, 1);
}

TEST_F(ProgramEdit, LimitsTruePeaks) {
  const auto end = edit({"limit", "--ceiling", "-12", "good.wav", "-o", "out.wav"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, StartsWith("Limit: true peaks of at most -12.00 dBTP\n"));
  EXPECT_THAT(end.output, HasSubstr("true peak -6.02 → -12.00 dBTP\n"));
  EXPECT_THAT(edit({"limit", "good.wav", "-o", "one.wav", "--dry-run"}).output,
              StartsWith("Limit: true peaks of at most -1.00 dBTP\n"));
}

TEST_F(ProgramEdit, NormalizesLoudness) {
  auto end = edit({"normalize", "--target", "-23", "good.wav", "-o", "out.wav", "--enforce"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, StartsWith("Normalize: to -23.00 LUFS, true peaks of at most -1.00 dBTP\n"
                                     "Normalized to -23.00 LUFS\n"));
  const auto measured = jsonLines(run({"analyze", "--json", "out.wav"}).output).at(0);
  EXPECT_NEAR(measured["integratedLUFS"].get<double>(), -23, 0.02);

  const std::vector<std::string> tooLoud = {"normalize", "--target", "-3",      "--ceiling", "-9",
                                            "good.wav",  "-o",       "out.wav", "--force"};
  end = edit(tooLoud);
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, HasSubstr(", which misses the target by "));
  auto enforced = tooLoud;
  enforced.insert(enforced.end(), {"--enforce", "--json"});
  end = edit(enforced);
  EXPECT_EQ(end.exitCode, 3);
  const auto normalization = jsonLines(end.output).at(0)["normalizations"].at(0);
  EXPECT_EQ(normalization["targetLUFS"], -3);
  EXPECT_EQ(normalization["ceilingDBTP"], -9);
  EXPECT_FALSE(normalization["isTargetReached"]);
}

TEST_F(ProgramEdit, NormalizesToADeliveryTarget) {
  const auto end = edit({"normalize", "--target-id", "amazon-music", "good.wav", "-o", "out.wav"});
  EXPECT_THAT(end.output,
              StartsWith("Normalize: to -14.00 LUFS, true peaks of at most -2.00 dBTP\n"));
}

TEST_F(ProgramEdit, SaysThatSilenceCannotBeNormalized) {
  folder().write("silence.wav", waveFile(std::string(96'000, '\0')));
  const auto end =
      edit({"normalize", "--target", "-23", "silence.wav", "-o", "out.wav", "--enforce"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_THAT(end.output, HasSubstr("\nThere is no loudness that could be normalized\n"));
}

/// A sidecar with one region, in seconds.
std::string sidecar(const char* start, const char* end) {
  return std::string(R"({"schemaVersion": 1, "generator": "x", "generatorVersion": "1",
    "audioFile": {"filename": "in.wav", "durationSeconds": 1, "sampleRate": 48000},
    "createdAt": "2026-01-01T00:00:00Z", "modifiedAt": "2026-01-01T00:00:00Z",
    "source": "imported", "regions": [{"id": "D7F9B1C2-0000-4000-8000-000000000001",
    "start": )") +
         start + R"(, "end": )" + end + "}]}";
}

TEST_F(ProgramEdit, LowersWhatIsNotSpeech) {
  folder().write("in.dlg.json", sidecar("0.2", "0.5"));
  const std::vector<std::string> expand = {"expand",  "--regions", "in.dlg.json", "in.wav", "-o",
                                           "out.wav", "--force",   "--reduction", "-20"};
  auto sharp = expand;
  sharp.insert(sharp.end(),
               {"--makeup", "6.0206", "--attack", "0", "--release", "0.1ms", "--encoding", "f32"});
  const auto end = edit(sharp);
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, StartsWith("Expand: -20.00 dB where nobody speaks, 1 region of speech, "
                                     "+6.02 dB on everything\n"));
  const auto result = read("out.wav");
  EXPECT_NEAR(result[0][9'599], 0.2 * 9'599, 0.1);
  EXPECT_NEAR(result[0][9'700], 2 * 9'700, 0.1);
  EXPECT_NEAR(result[1][23'999], -2 * 23'999, 0.2);
  EXPECT_NEAR(result[0][24'100], 0.2 * 24'100, 0.1);

  // Behind a trim the regions stand where the trim has put them.
  const auto behind = edit({"trim", "0.1", "1", "in.wav", "-o", "out.wav", "--force", "--json",
                            "--then", "expand --regions in.dlg.json --reduction -20"});
  EXPECT_EQ(behind.exitCode, 0) << behind.errors;
  EXPECT_EQ(jsonLines(behind.output).at(0)["edits"].at(1),
            Json::parse(R"({"operation": "expand", "reductionDB": -20, "makeupDB": 0,
                            "attackMs": 50, "releaseMs": 300,
                            "speech": [{"startFrame": 4800, "endFrame": 19200}]})"));
}

TEST_F(ProgramEdit, ExpandsBySpeechThatItFinds) {
  const auto end = edit({"expand", "--speech", "--reduction", "-6.0206", "in.wav", "-o", "out.wav",
                         "--attack", "#480"});
  ASSERT_EQ(end.exitCode, 0) << end.errors << "run scripts/install-model for the speech model";
  EXPECT_THAT(end.output,
              StartsWith("Expand: -6.02 dB where nobody speaks, 0 regions of speech\n"));
  EXPECT_EQ(read("out.wav")[0][10'000], 5'000);
}

TEST_F(ProgramEdit, ExpandNeedsRegionsThatCanBeRead) {
  const auto expectRegionsFail = [&](const std::string& text) {
    expectFailure(
        {"expand", "--regions", "in.dlg.json", "--reduction", "-20", "in.wav", "-o", "out.wav"},
        text);
  };
  expectRegionsFail("in.dlg.json: No such file or directory");
  folder().write("in.dlg.json", sidecar("0", "1"));
  const auto onto = edit({"expand", "--regions", "in.dlg.json", "--reduction", "-20", "in.wav",
                          "-o", "in.dlg.json", "--container", "wav", "--force"});
  EXPECT_THAT(onto.errors, StartsWith("orvane: Refusing to overwrite source file"));
}

TEST_F(ProgramEdit, DoesOneEditAfterTheOther) {
  expectDone({"trim", "#1000", "#2000", "in.wav", "-o", "out.wav", "--then", "trim '#10' #20",
              "--then", "silence before 0 --length \"#3\"", "--then", "split", "-q"});
  EXPECT_EQ(read("out.L.wav")[0], (std::vector<float>{0, 0, 0, 1010, 1011, 1012, 1013, 1014, 1015,
                                                      1016, 1017, 1018, 1019}));
}

TEST_F(ProgramEdit, TellsItAllAsJSON) {
  const auto end = edit({"gain", "20", "in.wav", "-o", "out.wav", "--json", "--then", "cut 0.1 0.2",
                         "--then", "fade out 0 0.5 --curve log"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.errors, HasSubstr("out.wav: "));
  EXPECT_THAT(end.errors, HasSubstr(" samples clipped"));
  const auto lines = jsonLines(end.output);
  ASSERT_EQ(lines.size(), 1U);
  const Json& document = lines[0];
  EXPECT_EQ(document["source"], "in.wav");
  EXPECT_EQ(document["edits"],
            Json::parse(R"([{"operation": "gain", "startFrame": 0, "endFrame": 48000, "gainDB": 20},
                            {"operation": "cut", "startFrame": 4800, "endFrame": 9600,
                             "crossfadeFrames": 480},
                            {"operation": "fade", "startFrame": 0, "endFrame": 24000,
                             "direction": "out", "curve": "log"}])"));
  EXPECT_GT(document["integratedLUFSAfter"], document["integratedLUFSBefore"]);
  EXPECT_GT(document["truePeakDBAfter"], document["truePeakDBBefore"]);
  EXPECT_EQ(document["frameCount"], 42'720);
  EXPECT_GT(document["clippedSamples"], 1000);
}

TEST_F(ProgramEdit, OnlySaysWhatItWouldDo) {
  const auto end = edit({"trim", "0", "0.5", "in.wav", "-o", "out.wav", "--dry-run"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, StartsWith("Trim: #0 to #24000"));
  EXPECT_THAT(end.output, HasSubstr("Would write out.wav: "));
  expectNothingWritten();
}

TEST_F(ProgramEdit, KeepsContainerAndEncodingUnlessAskedForOthers) {
  const auto format = [&](const std::string& name) { return run({"identify", "--json", name}); };
  const auto expectFormat = [&](const std::string& name, const char* container,
                                const char* encoding) {
    const auto end = format(name);
    EXPECT_THAT(end.output, HasSubstr(container)) << name;
    EXPECT_THAT(end.output, HasSubstr(encoding)) << name;
  };
  expectDone({"swap", "in.wav", "-o", "s8.caf", "--encoding", "u8"});
  expectFormat("s8.caf", "\"CAF\"", "8-bit integer");
  expectDone({"swap", "s8.caf", "-o", "again"});
  expectFormat("again", "\"CAF\"", "8-bit integer");
  expectDone({"swap", "in.wav", "-o", "f.aiff", "--encoding", "f32"});
  expectFormat("f.aiff", "\"AIFF-C\"", "32-bit float");
  expectDone({"swap", "in.wav", "-o", "x.wav", "--container", "w64", "--dither", "tpdf"});
  expectFormat("x.wav", "\"Wave64\"", "16-bit integer");
  expectUsageError({"swap", "in.wav", "-o", "x.flac"}, ".flac files are not written; --container");
}

TEST_F(ProgramEdit, TakesHeaderlessPCM) {
  folder().write("take.raw", littleEndian(1, 2) + littleEndian(2, 2) + littleEndian(3, 2));
  expectDone({"trim", "#1", "#3", "take.raw", "--raw", "s16le,48000,1", "-o", "out.wav"});
  EXPECT_EQ(read("out.wav"), (Channels{{2, 3}}));
}

TEST_F(ProgramEdit, NamesWhatIsLeftBehind) {
  using namespace orvane::test;
  const Bytes samples(4000);
  folder().write("tagged.wav", formFile("RIFF", "WAVE",
                                        {{.id = "bext", .body = Bytes(602)},
                                         {.id = "fmt ", .body = waveFormatBody({.bits = 32})},
                                         {.id = "data", .body = samples},
                                         {.id = "LIST", .body = Bytes(4)}}));
  const auto end = edit({"swap", "tagged.wav", "-o", "out.caf", "--json"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.errors,
            "orvane: warning: tagged.wav: samples are edited as 32-bit floats, which round those "
            "of 32 bits\n"
            "orvane: warning: tagged.wav: these chunks are left behind: bext, LIST\n");
  EXPECT_EQ(jsonLines(end.output).at(0)["leftBehind"], Json({"bext", "LIST"}));
}

TEST_F(ProgramEdit, NamesTheTagsAndChaptersOfCompressedAudioThatAreLeftBehind) {
  folder().write("meta.txt",
                 ";FFMETADATA1\ntitle=A song\nartist=Nobody\n"
                 "[CHAPTER]\nTIMEBASE=1/10\nSTART=0\nEND=5\ntitle=One\n");
  orvane::test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "sine=d=1", "-i",
                                   (folder() / "meta.txt").string(), "-map_metadata", "1",
                                   (folder() / "song.mp3").string()});
  const auto end = edit({"gain", "-1", "song.mp3", "-o", "out.wav", "--json"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.errors,
            "orvane: warning: song.mp3: its chapters are left behind\n"
            "orvane: warning: song.mp3: these tags are left behind: artist, title\n");
  EXPECT_EQ(jsonLines(end.output).at(0)["leftBehind"],
            Json({"chapters", "tag artist", "tag title"}));
}

TEST_F(ProgramEdit, TakesAFewSecondsOfAFileThatNoMemoryHolds) {
  folder().write("day.raw", "");
  std::filesystem::resize_file(folder() / "day.raw", std::uintmax_t{1} << 30);
  expectDone({"trim", "#1000000000", "#1000048000", "day.raw", "--raw", "u8,48000,1", "-o",
              "out.wav", "-q"});
  EXPECT_EQ(read("out.wav"), Channels(1, std::vector<float>(48000, -32'768.0F)));
}

TEST_F(ProgramEdit, RefusesWhatWouldDoOrLeaveNothing) {
  expectFailure({"fade", "in", "1", "2", "in.wav", "-o", "out.wav"},
                "in.wav: fade: there is no audio in the range");
  expectFailure({"trim", "0", "0.5", "in.wav", "-o", "out.wav", "--then", "gain 1 --from 0.5"},
                "in.wav: gain: there is no audio in the range");
  expectFailure({"trim", "1s", "#48000", "in.wav", "-o", "out.wav"},
                "in.wav: trim: there is no audio in the range");
  expectFailure({"cut", "0", "9", "in.wav", "-o", "out.wav"}, "in.wav: cut: nothing would be left");
  folder().write("mono.wav", waveFile(sineSamples(480, 0.5, 1), 1));
  expectFailure({"swap", "mono.wav", "-o", "out.wav"},
                "mono.wav: swap: only the two channels of stereo can be swapped");
}

TEST_F(ProgramEdit, WritesOntoNothingThatIsThereOrRead) {
  const auto before = orvane::test::readFile(folder() / "in.wav");
  EXPECT_THAT(edit({"invert", "in.wav", "-o", "in.wav", "--force"}).errors,
              StartsWith("orvane: Refusing to overwrite source file"));
  std::filesystem::create_hard_link(folder() / "in.wav", folder() / "link.wav");
  EXPECT_EQ(edit({"invert", "in.wav", "-o", "link.wav", "--force"}).exitCode, 1);
  EXPECT_EQ(orvane::test::readFile(folder() / "in.wav"), before);
  std::filesystem::create_hard_link(folder() / "in.wav", folder() / "x.R.wav");
  EXPECT_EQ(edit({"split", "in.wav", "-o", "x.wav", "--force"}).exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(folder() / "x.L.wav"));
  expectFailure({"invert", "in.wav", "-o", "good.wav"},
                "good.wav: File exists; --force replaces it");
  expectDone({"invert", "in.wav", "-o", "good.wav", "--force"});
}

TEST_F(ProgramEdit, AnswersWrongUsageInOneLine) {
  expectUsageError({}, "A subcommand is required (see orvane edit --help)");
  expectUsageError({"foo"}, "unknown command 'foo', the commands are trim, cut, silence");
  expectUsageError({"trim", "1", "2", "in.wav"},
                   "-o OUT or --in-place says where the edited audio goes");
  expectUsageError({"swap", "-o", "out.wav"}, "no IN is given");
  const auto expectWrong = [&](std::vector<std::string> words, const std::string& text) {
    words.insert(words.end(), {"in.wav", "-o", "out.wav"});
    expectUsageError(words, text);
  };
  expectWrong({"trim", "1"}, "trim takes START END");
  expectWrong({"trim", "1", "2", "3"}, "trim takes START END");
  expectWrong({"swap", "1"}, "swap takes no further words");
  expectWrong({"trim", "2", "1"}, "the end does not lie behind the start");
  expectWrong({"trim", "x", "1"}, "START: 'x' is no time; times are seconds");
  expectWrong({"trim", "-1", "1"}, "START: '-1' is no time");
  expectWrong({"invert", "--from", "2", "--to", "1"}, "the end does not lie behind the start");
  expectWrong({"fade", "up", "1", "2"}, "fade: unknown name 'up'; the names are in, out");
  expectWrong({"fade", "in", "0", "1", "--curve", "cubic"}, "--curve: unknown name 'cubic'");
  expectWrong({"gain", "loud"}, "gain takes decibels from -300 to 300, not 'loud'");
  expectWrong({"gain", "nan"}, "gain takes decibels");
  expectWrong({"normalize"}, "normalize takes either --target or --target-id");
  expectWrong({"normalize", "--target", "-23", "--target-id", "spotify"}, "normalize takes either");
  expectWrong({"normalize", "--target-id", "x"}, "--target-id: unknown target 'x'");
  expectWrong({"normalize", "--target-id", "netflix"}, "--target-id: netflix is not about");
  expectWrong({"limit", "--ceiling", "low"}, "--ceiling takes a number");
  expectWrong({"expand", "--reduction", "-3"}, "expand takes either --regions or --speech");
  expectWrong({"expand", "--speech", "--regions", "x", "--reduction", "-3"}, "expand takes either");
  expectWrong({"expand", "--speech"}, "--reduction is missing");
  expectWrong({"expand", "--speech", "--reduction", "3"}, "--reduction takes a number from -300");
  expectWrong({"silence", "before", "1"}, "--length is missing");
  expectWrong({"silence", "replace", "1"}, "silence replace takes START END");
  expectWrong({"silence", "replace", "0", "1", "--length", "1"},
              "silence replace keeps the length");
  expectWrong({"split", "--then", "swap"}, "split comes last");
  expectWrong({"swap", "--then", ""}, "--then \"\": an operation is missing");
  expectWrong({"swap", "--then", "spin"}, "--then \"spin\": unknown operation 'spin'");
  expectWrong({"swap", "--then", "gain"}, "--then \"gain\": gain takes DB");
  expectWrong({"swap", "--then", "gain 1 --loud"}, "--then \"gain 1 --loud\": The following");
  expectWrong({"swap", "--then", "gain '1"}, "--then \"gain '1\": a quote is not closed");
}

TEST_F(ProgramEdit, EveryOperationHasItsHelp) {
  for (const char* operation : {"trim", "cut", "silence", "fade", "gain", "invert", "dc", "peak",
                                "limit", "normalize", "expand", "swap", "split"}) {
    const auto end = edit({operation, "--help"});
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, StartsWith(std::string("Usage: orvane edit ") + operation));
    EXPECT_THAT(end.output, HasSubstr(" IN\n"));
  }
}

}  // namespace
}  // namespace orvane::cli::test
