#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "tests/cli/program_fixture.h"

namespace orvane::cli::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

std::size_t lineCount(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

class ProgramErrors : public ProgramTest {
 protected:
  /// A file that cannot be measured: exit code 1, one line, nothing on standard output.
  void expectFailure(const std::string& name, const std::string& text) const {
    ProgramEnd end = run({"analyze", "--", name});
    EXPECT_EQ(end.exitCode, 1) << name;
    EXPECT_THAT(end.output, IsEmpty());
    if (const auto hint = end.errors.find("; --recursive"); hint != std::string::npos)
      end.errors.replace(hint, std::string::npos, "\n");
    EXPECT_THAT(end.errors, StartsWith("orvane: "));
    EXPECT_THAT(end.errors, HasSubstr(text));
    EXPECT_EQ(lineCount(end.errors), 1U) << end.errors;
    // All commands say the same of a file.
    const ProgramEnd identified = run({"identify", "--json", "--", name});
    EXPECT_EQ(identified.exitCode, 1) << name;
    EXPECT_EQ(identified.errors, end.errors);
    const auto lines = jsonLines(identified.output);
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ("orvane: " + lines[0].at("error").get<std::string>() + "\n", end.errors);
  }

  /// Wrong arguments: exit code 2, one line that begins with `text`, nothing on standard output.
  void expectUsageError(const std::vector<std::string>& arguments, const std::string& text) const {
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, 2) << text;
    EXPECT_THAT(end.output, IsEmpty());
    EXPECT_THAT(end.errors, StartsWith("orvane: " + text));
    EXPECT_THAT(end.errors, EndsWith("--help)\n"));
    EXPECT_EQ(lineCount(end.errors), 1U) << end.errors;
  }
};

TEST_F(ProgramErrors, NamesAMissingFile) {
  expectFailure("missing.wav", "orvane: missing.wav: No such file or directory\n");
}

TEST_F(ProgramErrors, RefusesDirectoriesPipesSocketsAndDevices) {
  ASSERT_EQ(mkfifo((folder() / "pipe").c_str(), 0600), 0);
  const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  (folder() / "socket").string().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  expectFailure(folder().path().string(), "Is a directory");
  // A slash behind the name once took the name away.
  std::filesystem::create_directories(folder() / "music/album");
  expectFailure("music/album/", "orvane: music/album/: Is a directory\n");
  expectFailure("/", "orvane: \"/\": Is a directory\n");
  expectFailure("pipe", "pipe: ");
  expectFailure("socket", "socket: ");
  expectFailure("/dev/zero", "zero: ");
  close(descriptor);
}

// Most commands gave the last part of the path alone, in which two files may be alike.
TEST_F(ProgramErrors, NameFilesAsTheyWereTypedWhateverTheCommand) {
  std::filesystem::create_directories(folder() / "a");
  std::filesystem::create_directories(folder() / "b");
  folder().write("a/x.wav", waveFile(sineSamples(4'800, 0.5)));
  folder().write("b/x.wav", "nothing");
  folder().write("b/empty.wav", waveFile(""));
  folder().write("b/odd.raw", "12345");
  folder().write("b/x.json", "{");
  const auto expectText = [this](const std::vector<std::string>& arguments, const std::string& text,
                                 const std::string& input = "") {
    ProgramSetup setup;
    setup.arguments = arguments;
    setup.input = input;
    EXPECT_THAT(run(setup).errors, StartsWith("orvane: " + text)) << arguments.at(0);
  };
  expectText({"diff", "a/x.wav", "b/x.wav"}, "b/x.wav: ");
  expectText({"diff", "a/x.wav", "b/empty.wav"}, "Empty or unreadable file: b/empty.wav");
  expectText({"diff", "b/odd.raw", "a/x.wav", "--raw-a", "s16le,48000,2"}, "b/odd.raw: The file s");
  expectText({"edit", "gain", "-3", "./b/x.wav", "-o", "c.wav"}, "./b/x.wav: ");
  expectText({"edit", "gain", "-3", "a/x.wav", "-o", "b/x.wav"}, "b/x.wav: File exists; --force");
  expectText({"edit", "gain", "40", "a/x.wav", "-o", "a/loud.wav"}, "warning: a/loud.wav: 9");
  expectText({"edit", "gain", "-3", "-", "-o", "c.wav"}, "standard input: ", "nothing");
  expectText({"splice", "append", "a/x.wav", "b/x.wav", "-o", "c.wav"}, "b/x.wav: ");
  expectText({"generate", "sine", "-o", "a/x.wav"}, "a/x.wav: File exists; --force");
  expectText({"identify", "b/x.wav"}, "b/x.wav: ");
  expectText({"dialogue", "show", "b/none.wav"}, "b/none.wav: No such file");
  expectText({"dialogue", "import", "b/none.csv", "a/x.wav"}, "b/none.csv: No such file");
  expectText({"raw", "guess", "b/none.raw"}, "b/none.raw: No such file");
  expectText({"raw", "convert", "b/odd.raw", "--raw", "s16le,48000,2", "-o", "c.wav"},
             "b/odd.raw: The file size");
  expectText({"report", "b/x.json", "--csv", "-"}, "b/x.json: ");
  expectText({"music", "show", "b/x.json"}, "b/x.json: ");
  expectText({"analyze", "a/x.wav", "--target-file", "b/x.json"}, "b/x.json: ");
  expectText({"analyze", "a/x.wav", "--chapters", "b/x.json"}, "b/x.json: ");
  folder().write("a/x.wav.dlg.json", "{");
  expectText({"dialogue", "show", "a/x.wav"}, "a/x.wav.dlg.json: ");
}

TEST_F(ProgramErrors, NamesAnUnreadableFile) {
  if (geteuid() == 0) {
    // No file is unreadable to root; one of the kernel's own is.
    expectFailure("/proc/self/mem", "mem: ");
    return;
  }
  folder().write("locked.wav", waveFile(sineSamples(480, 0.5)));
  chmod((folder() / "locked.wav").c_str(), 0);
  expectFailure("locked.wav", "locked.wav: Permission denied");
}

TEST_F(ProgramErrors, RefusesWhatIsNoAudio) {
  folder().write("empty.wav", "");
  folder().write("byte.wav", "R");
  folder().write("text.wav", "This is only text, whatever the name says.\n");
  folder().write("list.wav", "#EXTM3U\n#EXTINF:1,x\ngood.wav\n");
  for (const char* name : {"empty.wav", "byte.wav", "text.wav", "list.wav"})
    expectFailure(name, name);
}

// A label for each of the channels that these 28 bytes state took gigabytes.
TEST_F(ProgramErrors, RefusesMoreChannelsThanCanBeRead) {
  const auto bigEndian = [](std::uint32_t value) {
    std::string text = littleEndian(value, 4);
    std::reverse(text.begin(), text.end());
    return text;
  };
  std::string file = ".snd";
  for (const std::uint32_t field : {24U, 4U, 3U, 48'000U, 100'000'000U, 0U})
    file += bigEndian(field);
  folder().write("many.au", file);
  expectFailure("many.au",
                "many.au: The file states 100000000 channels; at most 1024 can be read\n");
}

TEST_F(ProgramErrors, RefusesRatesThatNoRecorderHas) {
  folder().write("slow.wav", waveFile(sineSamples(480, 0.5), 2, 50));
  const ProgramEnd end = run({"analyze", "slow.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors,
            "orvane: slow.wav: The sample rate of 50 Hz lies outside 100 Hz to 10 MHz\n");
}

TEST_F(ProgramErrors, EscapesHostileNamesInMessages) {
  const ProgramEnd end = run({"analyze", "a\x1B[2J\u202E\nb\xFF.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("a\\x1B[2J\\u202E\\nb\\xFF.wav"));
  EXPECT_EQ(lineCount(end.errors), 1U);
}

TEST_F(ProgramErrors, AnswersWrongUsageInOneLine) {
  expectUsageError({}, "A subcommand is required");
  expectUsageError({"good.wav"}, "unknown command 'good.wav', the commands are analyze");
  expectUsageError({"analyze"}, "no FILE is given");
  expectUsageError({"identify"}, "no FILE is given");
  expectUsageError({"analyze", "--bogus", "good.wav"},
                   "The following argument was not expected: --bogus");
  expectUsageError({"analyze", "good.wav", "--curves"}, "--curves requires --json");
  expectUsageError({"analyze", "good.wav", "--jobs", "0"}, "--jobs: ");
  expectUsageError({"analyze", "good.wav", "--jobs", "x"}, "");
  expectUsageError({"analyze", "good.wav", "--jobs"}, "--jobs: ");
  expectUsageError({"analyze", "good.wav", "--stream", "-1"}, "");
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"analyze"}, {"dialogue", "detect"}, {"dialogue", "import", "x"}}) {
    const auto expectWrongSource = [&](std::vector<std::string> options, const char* text) {
      options.insert(options.begin(), command.begin(), command.end());
      options.insert(options.begin() + static_cast<std::ptrdiff_t>(command.size()), "good.wav");
      expectUsageError(options, text);
    };
    expectWrongSource({"--raw", "s16le,48000"}, "--raw: channels is missing");
    expectWrongSource({"--raw", "s16le,48000,2", "--channels", "2"},
                      "--raw: channels is stated twice");
    expectWrongSource({"--rate", "48000"}, "--raw is missing");
  }
  expectUsageError({"analyze", "-", "-"}, "standard input can be read only once");
  expectUsageError({"analyze", "-", "--files-from", "-"}, "standard input can be read only once");
  expectUsageError({"analyze", "--bo\ngus\x1B"},
                   "The following argument was not expected: --bo\\ngus\\x1B");
}

TEST_F(ProgramErrors, RunsNothingWhenAnArgumentIsWrong) {
  const ProgramEnd end = run({"analyze", "good.wav", "--bogus"});
  EXPECT_THAT(end.output, IsEmpty());
}

TEST_F(ProgramErrors, FailsWhenStandardOutputCannotBeWritten) {
  for (const char* command : {"analyze", "identify"}) {
    ProgramSetup full;
    full.arguments = {command, "good.wav"};
    full.outputFile = "/dev/full";
    const ProgramEnd fullEnd = run(full);
    EXPECT_EQ(fullEnd.exitCode, 1);
    EXPECT_EQ(fullEnd.errors, "orvane: standard output: No space left on device\n");

    ProgramSetup closed;
    closed.arguments = {command, "good.wav"};
    closed.closesOutput = true;
    const ProgramEnd closedEnd = run(closed);
    EXPECT_EQ(closedEnd.exitCode, 1);
    EXPECT_EQ(closedEnd.errors, "orvane: standard output: Bad file descriptor\n");
  }
}

// The libraries once looked for their own needs in the folder that the program was started in.
TEST_F(ProgramErrors, LoadsNothingFromTheFolderItIsStartedIn) {
  for (const char* name : {"libOrvaneCore.so.0", "libOrvaneHeadless.so.0", "libc.so.6", "libm.so.6",
                           "libstdc++.so.6", "libgcc_s.so.1", "libsoxr.so.0", "libavformat.so.59",
                           "libavcodec.so.59", "libavutil.so.57"})
    folder().write(name, "not a library");
  const ProgramEnd end = run({"--version"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, Not(HasSubstr("FFmpeg is not installed")));
  EXPECT_THAT(end.errors, IsEmpty());
}

TEST_F(ProgramErrors, HelpsWithCommandsOfAnyDepthWithoutTheFooterOfTheProgram) {
  EXPECT_THAT(run({"--help"}).output, HasSubstr("Exit codes: "));
  for (const std::vector<std::string>& command : {std::vector<std::string>{"analyze"},
                                                  {"raw"},
                                                  {"raw", "guess"},
                                                  {"raw", "presets"},
                                                  {"raw", "presets", "save"},
                                                  {"music", "clip"},
                                                  {"edit", "trim"}}) {
    auto arguments = command;
    arguments.emplace_back("--help");
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, 0);
    EXPECT_THAT(end.output, HasSubstr("Print this help\n")) << command.back();
    EXPECT_THAT(end.output, Not(HasSubstr("Exit codes: "))) << command.back();
  }
  EXPECT_THAT(run({"splice", "append", "--help"}).output, HasSubstr("speak of BASE.\n"));
}

TEST_F(ProgramErrors, FailsWhenHelpCannotBeWritten) {
  ProgramSetup setup;
  setup.arguments = {"--help"};
  setup.outputFile = "/dev/full";
  EXPECT_EQ(run(setup).exitCode, 1);
}

TEST_F(ProgramErrors, StopsAtTheFirstOutputFailureOfABatch) {
  ProgramSetup setup;
  setup.arguments = {"analyze", "good.wav", "good.wav", "good.wav", "good.wav", "--jobs", "2"};
  setup.outputFile = "/dev/full";
  const ProgramEnd end = run(setup);
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: standard output: No space left on device\n");
}

TEST_F(ProgramErrors, EndsLikeAnyToolWhenNobodyReadsOn) {
  for (const char* command : {"analyze", "identify", "--help"}) {
    ProgramSetup setup;
    setup.arguments = {command, "good.wav", "good.wav"};
    setup.hasNoReader = true;
    const ProgramEnd end = run(setup);
    EXPECT_EQ(end.signal, SIGPIPE) << command;
    EXPECT_THAT(end.errors, IsEmpty());
  }
}

// The system's answer to that is to end the process.
TEST_F(ProgramErrors, TellsWhenAFileGetsLargerThanAllowed) {
  const orvane::test::TemporaryDirectory temporary;
  ProgramSetup setup;
  setup.arguments = {"analyze", "-"};
  setup.environment = {"TMPDIR=" + temporary.path().string()};
  setup.input = waveFile(sineSamples(48'000, 0.5));
  setup.largestFile = 65'536;
  const ProgramEnd end = run(setup);
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr(": File too large\n"));
  EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
}

TEST_F(ProgramErrors, DoesNotHandItsMistakesToOtherFilesWhenStreamsAreClosed) {
  ProgramSetup setup;
  setup.arguments = {"analyze", "-", "--json"};
  setup.input = waveFile(sineSamples(4800, 0.5));
  setup.closesOutput = true;  // the copy of standard input must not take the place of the output
  const ProgramEnd end = run(setup);
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("standard output"));
}

}  // namespace
}  // namespace orvane::cli::test
