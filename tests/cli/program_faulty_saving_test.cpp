// What the program writes is the old or the new file, whole, whatever call of the system fails and
// whenever the program is killed.

#include <signal.h>
#include <sys/wait.h>

#include <cerrno>

#include "tests/cli/program_fixture.h"
#include "tests/support/faulty_saving.h"
#include "tests/support/test_places.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

namespace faults = orvane::test::SystemCallFaults;

using orvane::test::FaultySaving;

class ProgramFaultySaving : public ProgramTest {
 protected:
  /// `arguments` write `output`, a name in the folder.
  FaultySaving saving(std::vector<std::string> arguments, const std::string& output) const {
    ProgramSetup setup;
    setup.arguments = std::move(arguments);
    setup.folder = folder().path();
    return {folder() / output, FaultySaving::ofProgram(orvane::test::places::program, setup,
                                                       orvane::test::places::faults)};
  }
};

TEST_F(ProgramFaultySaving, AReportThatIsReplaced) {
  folder().write("good.csv", "old");
  const auto report =
      saving({"analyze", "-q", "good.wav", "--csv", "good.csv", "--force"}, "good.csv");
  for (const bool anonymous : {true, false}) {
    report.failEveryCall({anonymous ? ENOSPC : EIO}, {.anonymous = anonymous});
    report.killAtEveryCall({.anonymous = anonymous});
  }
}

TEST_F(ProgramFaultySaving, AReportThatIsNew) {
  const auto report = saving({"analyze", "-q", "good.wav", "--csv", "good.csv"}, "good.csv");
  report.failEveryCall({EDQUOT});
  report.killAtEveryCall();
}

TEST_F(ProgramFaultySaving, RegionsThatAreExported) {
  folder().write("labels.txt", "0.25\t0.5\tAnna\n");
  ASSERT_EQ(run({"dialogue", "import", "-q", "labels.txt", "good.wav"}).exitCode, 0);
  folder().write("good.csv", "old");
  const auto regions =
      saving({"dialogue", "export", "good.wav", "-o", "good.csv", "--force"}, "good.csv");
  regions.disturbEveryWrite();
  regions.killAtEveryCall();
}

TEST_F(ProgramFaultySaving, ASignalThatIsGenerated) {
  folder().write("tone.wav", "old");
  const auto signal = saving(
      {"generate", "sine", "-q", "--duration", "0.1", "-o", "tone.wav", "--force"}, "tone.wav");
  signal.failEveryCall({EIO, ENOSPC, EDQUOT, EFBIG, EINTR});
  signal.disturbEveryWrite();
  signal.killAtEveryCall();
}

TEST_F(ProgramFaultySaving, HeaderlessAudioThatIsConverted) {
  folder().write("take.raw", sineSamples(4800, 0.5));
  const auto conversion = saving(
      {"raw", "convert", "-q", "take.raw", "--raw", "s16le,48000,2", "-o", "take.wav"}, "take.wav");
  for (const bool anonymous : {true, false}) {
    conversion.failEveryCall({ENOSPC}, {.anonymous = anonymous});
    conversion.killAtEveryCall({.anonymous = anonymous});
  }
}

TEST_F(ProgramFaultySaving, AudioThatIsEdited) {
  folder().write("out.wav", "old");
  const auto edited =
      saving({"edit", "trim", "-q", "0", "0.1", "good.wav", "-o", "out.wav", "--force"}, "out.wav");
  edited.failEveryCall({ENOSPC});
  edited.disturbEveryWrite();
  edited.killAtEveryCall();
}

TEST_F(ProgramFaultySaving, AnEditInPlace) {
  const auto edit = saving({"edit", "gain", "-6", "-q", "good.wav", "--in-place"}, "good.wav");
  edit.failEveryCall({ENOSPC});
  edit.killAtEveryCall();
  edit.failAllocations(5);
}

/// One saver is stopped on its way while another one saves from beginning to end.
TEST_F(ProgramFaultySaving, TwoEditsInPlaceOfWhichOneIsStopped) {
  const auto content = [&] { return orvane::test::readFile(folder() / "good.wav"); };
  const std::string original = content();
  const std::vector<std::string> kInvert = {"edit", "invert", "good.wav", "--in-place", "-q"};
  ASSERT_EQ(run(kInvert).exitCode, 0);
  const std::string inverted = content();
  for (const std::string call : {"fallocate", "pwrite", "fsync", "linkat", "renameat2"}) {
    SCOPED_TRACE(call);
    folder().write("good.wav", original);
    ProgramSetup setup;
    setup.folder = folder().path();
    setup.arguments = {"edit", "gain", "-6", "good.wav", "--in-place", "-q"};
    setup.environment = faults::variablesFor({.kind = faults::Kind::stop, .only = call},
                                             orvane::test::places::faults, folder() / "calls");
    setup.meanwhile = [&](int process) {
      siginfo_t state{};
      ::waitid(P_PID, static_cast<id_t>(process), &state, WSTOPPED | WEXITED | WNOWAIT);
      EXPECT_EQ(state.si_code, CLD_STOPPED);
      EXPECT_EQ(run(kInvert).exitCode, 0);
      ::kill(process, SIGCONT);
    };
    const ProgramEnd told = orvane::test::runProgram(orvane::test::places::program, setup);
    EXPECT_EQ(told.exitCode, 1);
    EXPECT_EQ(told.errors,
              "orvane: Saving failed and the original file was left unchanged: the file was "
              "changed by another program meanwhile\n");
    EXPECT_TRUE(content() == inverted);
    std::filesystem::remove(folder() / "calls");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder().path()), {}), 1);
  }
}

TEST_F(ProgramFaultySaving, ATakeInPlace) {
  folder().write("take.wav", waveFile(sineSamples(4800, 0.5)));
  const auto spliced =
      saving({"splice", "append", "-q", "good.wav", "take.wav", "--in-place"}, "good.wav");
  spliced.failEveryCall({ENOSPC});
  spliced.killAtEveryCall();
}

TEST_F(ProgramFaultySaving, RecordingsWithATake) {
  folder().write("out.wav", "old");
  folder().write("take.wav", waveFile(sineSamples(4800, 0.5)));
  const auto spliced = saving(
      {"splice", "append", "-q", "take.wav", "good.wav", "-o", "out.wav", "--force"}, "out.wav");
  spliced.failEveryCall({ENOSPC});
  spliced.killAtEveryCall();
  spliced.failAllocations(7);
}

TEST_F(ProgramFaultySaving, AListOfPresets) {
  ProgramSetup setup;
  setup.folder = folder().path();
  setup.environment = {"XDG_DATA_HOME=" + folder().path().string()};
  setup.arguments = {"raw", "presets", "save", "old", "--raw", "s16le,48000,2"};
  ASSERT_EQ(run(setup).exitCode, 0);
  setup.arguments = {"raw", "presets", "save", "old", "--raw", "u8,8000,1", "--force"};
  const FaultySaving presets(
      folder() / "Orvane/raw-pcm-presets.json",
      FaultySaving::ofProgram(orvane::test::places::program, setup, orvane::test::places::faults));
  for (const bool anonymous : {true, false}) {
    presets.failEveryCall({anonymous ? ENOSPC : EIO}, {.anonymous = anonymous});
    presets.disturbEveryWrite({.anonymous = anonymous});
    presets.killAtEveryCall({.anonymous = anonymous});
  }
}

}  // namespace
}  // namespace orvane::cli::test
