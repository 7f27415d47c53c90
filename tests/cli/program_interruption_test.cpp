// How the program ends when it is told to, and what is left when it is killed.

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>

#include <chrono>
#include <thread>

#include "orvane/platform/file_descriptor.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/fake_browser.h"
#include "tests/support/sanitized.h"
#include "tests/support/signal_handling.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Clock = std::chrono::steady_clock;

/// One second, and some for a busy machine.
std::chrono::seconds soon() {
  return std::chrono::seconds(orvane::test::isSanitized() ? 10 : 4);
}

void pause(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::size_t entriesOf(const std::filesystem::path& folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder),
                                                std::filesystem::directory_iterator()));
}

class ProgramInterruption : public ProgramTest {
 protected:
  /// A run whose temporary files have a folder of their own.
  ProgramSetup setupOf(std::vector<std::string> arguments) const {
    return {.arguments = std::move(arguments),
            .environment = {"TMPDIR=" + temporary_.path().string()}};
  }
  /// Three hours of silence, which take no disk space.
  void writeLongFile(const std::string& name) const {
    folder().write(name, waveFile("", 1));
    std::filesystem::resize_file(folder() / name, std::uintmax_t{48'000} * 3600 * 3 * 2);
  }
  const std::filesystem::path& temporary() const { return temporary_.path(); }

 private:
  orvane::test::TemporaryDirectory temporary_{};
};

TEST_F(ProgramInterruption, EndsWithTheSignalsCodeAndLeavesNothingBehind) {
  for (const auto& [signal, code] :
       {std::pair{SIGHUP, 129}, std::pair{SIGINT, 130}, std::pair{SIGTERM, 143}}) {
    auto setup = setupOf({"analyze", "-"});
    // The program waits for standard input, which nobody writes, when the signal comes.
    setup.meanwhile = [number = signal](int process) {
      orvane::test::waitUntilHandled(number, process);
      pause(300);
      kill(process, number);
      pause(200);
    };
    const ProgramEnd end = run(setup);
    EXPECT_EQ(end.exitCode, code);
    EXPECT_THAT(end.output, IsEmpty());
    EXPECT_THAT(end.errors, IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(temporary()));
  }
}

TEST_F(ProgramInterruption, EndsAnyWorkSoon) {
  writeLongFile("long.wav");
  const orvane::test::FakeBrowser browser("hang");
  const std::vector<std::vector<std::string>> works = {
      {"analyze", "long.wav"},
      {"analyze", "--speech", "long.wav"},
      {"dialogue", "detect", "long.wav"},
      {"analyze", "good.wav", "--pdf", "good.pdf"},
  };
  for (const auto& arguments : works) {
    auto setup = setupOf(arguments);
    setup.environment.push_back("PATH=" + browser.searchPath());
    Clock::time_point told{};
    setup.meanwhile = [&](int process) {
      orvane::test::waitUntilHandled(SIGTERM, process);
      pause(300);
      told = Clock::now();
      kill(process, SIGTERM);
    };
    const ProgramEnd end = run(setup);
    EXPECT_EQ(end.exitCode, 143) << arguments.back();
    EXPECT_LT(Clock::now() - told, soon()) << arguments[1] << " " << arguments.back();
    EXPECT_TRUE(std::filesystem::is_empty(temporary())) << arguments.back();
  }
}

TEST_F(ProgramInterruption, TheNextRunRemovesTheBrowserFolderOfAKilledOne) {
  const orvane::test::FakeBrowser browser("hang");
  auto killed = setupOf({"analyze", "good.wav", "--pdf", "good.pdf"});
  killed.environment.push_back("PATH=" + browser.searchPath());
  killed.meanwhile = [&](int process) {
    while (!std::filesystem::exists(browser.program().parent_path() / "child")) pause(10);
    pause(100);
    // What lives is not touched by another run.
    auto other = setupOf({"analyze", "good.wav", "--pdf", "other.pdf"});
    const orvane::test::FakeBrowser broken("exit It broke");
    other.environment.push_back("PATH=" + broken.searchPath());
    EXPECT_EQ(run(other).exitCode, 1);
    EXPECT_EQ(entriesOf(temporary()), 1U);
    kill(process, SIGKILL);
    kill(browser.number("child"), SIGKILL);
    kill(browser.number("pid"), SIGKILL);
  };
  EXPECT_EQ(run(killed).signal, SIGKILL);
  ASSERT_EQ(entriesOf(temporary()), 1U);

  auto next = setupOf({"analyze", "good.wav", "--pdf", "next.pdf"});
  const orvane::test::FakeBrowser broken("exit It broke");
  next.environment.push_back("PATH=" + broken.searchPath());
  EXPECT_EQ(run(next).exitCode, 1);
  EXPECT_TRUE(std::filesystem::is_empty(temporary()));
}

TEST_F(ProgramInterruption, NamesWhatAKilledRunHasLeftBesideItsOutputs) {
  folder().write(".r.orvane-save-1A2B3C4D.csv", "half a report");
  const auto left = std::filesystem::canonical(folder() / ".r.orvane-save-1A2B3C4D.csv").string();
  folder().write("labels.txt", "0.25\t0.5\tAnna\n");
  const std::vector<std::vector<std::string>> writing = {
      {"analyze", "-q", "good.wav", "--report", "r.json", "--csv", "r.csv"},
      {"report", "r.json", "--html", "r.html"},
      {"dialogue", "import", "labels.txt", "good.wav"},
      {"dialogue", "export", "good.wav", "-o", "labels.csv"},
  };
  for (const auto& arguments : writing) {
    const ProgramEnd end = run(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_EQ(end.errors, "orvane: warning: " + left +
                              " was left by a run that was killed and can be deleted\n");
  }
  EXPECT_TRUE(std::filesystem::exists(left));
  EXPECT_THAT(run({"analyze", "-q", "good.wav"}).errors, IsEmpty());

  // That of a run that lives is nobody's business.
  const FileDescriptor file(open(left.c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(file.number(), LOCK_EX | LOCK_NB), 0);
  const ProgramEnd end = run({"analyze", "-q", "good.wav", "--csv", "other.csv"});
  EXPECT_THAT(end.errors, IsEmpty());
}

}  // namespace
}  // namespace orvane::cli::test
