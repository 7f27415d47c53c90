// What does not fit into memory is edited in slices, and comes to the same files.

#include <cmath>
#include <random>

#include "tests/cli/program_fixture.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;

using Words = std::vector<std::string>;

/// Five seconds of stereo noise that swells and ebbs, with a click each second.
std::string programme() {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> sample(-1, 1);
  std::string samples;
  for (int i = 0; i < 240'000; ++i) {
    const double level = 0.02 + 0.3 * std::pow(std::sin(3e-5 * i), 2);
    for (int channel = 0; channel < 2; ++channel) {
      const double x = i % 48'000 < 3 ? 1 : level * sample(random) + 0.01 * channel;
      samples += littleEndian(static_cast<std::uint16_t>(std::lround(32'000 * x)), 2);
    }
  }
  return waveFile(samples);
}

class ProgramSlicedEdit : public ProgramTest {
 protected:
  ProgramSlicedEdit() { folder().write("in.wav", programme()); }

  /// What the program tells, and the bytes of the file.
  struct Result {
    ProgramEnd end{};
    std::string bytes{};
  };

  Result edit(Words words, const std::string& output, const Words& more) const {
    words.insert(words.begin(), "edit");
    words.insert(words.end(), more.begin(), more.end());
    Result result{.end = run(words)};
    result.bytes = orvane::test::readFile(folder() / output);
    std::filesystem::remove(folder() / output);
    return result;
  }

  void expectSame(const Words& words, const std::string& output = "out.wav") const {
    const Result held = edit(words, output, {"--memory", "1000"});
    const Result sliced = edit(words, output, {"--memory", "0"});
    EXPECT_EQ(held.end.exitCode, 0) << held.end.errors;
    EXPECT_EQ(sliced.end.exitCode, 0) << sliced.end.errors;
    EXPECT_EQ(sliced.end.output, held.end.output);
    EXPECT_EQ(sliced.end.errors, held.end.errors);
    EXPECT_TRUE(sliced.bytes == held.bytes) << held.end.output;
    EXPECT_GT(held.bytes.size(), 1'000U);
  }
};

TEST_F(ProgramSlicedEdit, GivesTheSameFiles) {
  const std::vector<Words> edits = {{"trim", "1", "4"},
                                    {"cut", "1", "2", "--crossfade", "500ms"},
                                    {"silence", "before", "1", "--length", "3"},
                                    {"fade", "out", "0.5", "4"},
                                    {"gain", "-3", "--from", "1", "--to", "4"},
                                    {"dc"},
                                    {"peak", "-1"},
                                    {"limit", "--ceiling", "-6"},
                                    {"swap"}};
  for (Words words : edits) {
    words.insert(words.end(), {"in.wav", "-o", "out.wav"});
    expectSame(words);
  }
}

TEST_F(ProgramSlicedEdit, TellsTheSameOfChains) {
  expectSame({"normalize", "--target", "-12", "in.wav", "-o", "out.wav", "--encoding", "s24",
              "--dither", "tpdf", "--json", "--then", "cut 1 2", "--then", "dc", "--then",
              "limit --ceiling -3", "--then", "fade in 0 1"});
  expectSame({"trim", "1", "4", "in.wav", "-o", "out.caf", "--then", "split", "--force"},
             "out.R.caf");
}

TEST_F(ProgramSlicedEdit, SavesTheSameInPlace) {
  const auto saved = [&](const char* memory) {
    std::filesystem::copy(folder() / "in.wav", folder() / "a.wav");
    return edit({"gain", "-3", "--from", "1", "--to", "2", "a.wav", "--in-place", "--dither",
                 "tpdf", "--then", "cut 3 4"},
                "a.wav", {"--memory", memory});
  };
  const Result held = saved("1000");
  const Result sliced = saved("0");
  EXPECT_EQ(sliced.end.exitCode, 0) << sliced.end.errors;
  EXPECT_EQ(sliced.end.output, held.end.output);
  EXPECT_TRUE(sliced.bytes == held.bytes);
}

TEST_F(ProgramSlicedEdit, ReadsOtherSourcesAsOften) {
  const std::pair<const char*, const char*> sources[] = {
      {"in.flac", "flac"}, {"in.mp3", "mp3"}, {"in.raw", "s16le"}};
  for (const auto& [name, format] : sources)
    orvane::test::runTool("ffmpeg", {"-v", "error", "-i", (folder() / "in.wav").string(), "-f",
                                     format, (folder() / name).string()});
  expectSame({"normalize", "--target", "-20", "in.flac", "-o", "out.wav"});
  expectSame({"peak", "-3", "in.mp3", "-o", "out.wav"});
  expectSame({"peak", "-3", "in.raw", "--raw", "s16le,48000,2", "-o", "out.wav"});
}

TEST_F(ProgramSlicedEdit, ReadsStandardInputAsOften) {
  const std::string bytes = orvane::test::readFile(folder() / "in.wav");
  ProgramSetup setup;
  setup.input = bytes;
  setup.arguments = {"edit", "peak", "-3", "-", "-o", "piped.wav", "--memory", "0", "--json"};
  const auto end = run(setup);
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(jsonLines(end.output).at(0)["source"], "-");
  EXPECT_EQ(run({"edit", "peak", "-3", "in.wav", "-o", "out.wav"}).exitCode, 0);
  EXPECT_TRUE(orvane::test::readFile(folder() / "piped.wav") ==
              orvane::test::readFile(folder() / "out.wav"));

  setup.arguments = {"edit", "cut", "0", "9", "-", "-o", "x.wav"};
  EXPECT_EQ(run(setup).errors, "orvane: standard input: cut: nothing would be left\n");
  setup.arguments = {"edit", "swap", "-", "--in-place"};
  EXPECT_EQ(run(setup).exitCode, 2);
  setup.input = "this is no audio at all, and too long for a header of any kind";
  setup.arguments = {"edit", "swap", "-", "-o", "x.wav"};
  EXPECT_THAT(run(setup).errors, ::testing::StartsWith("orvane: standard input: "));
}

/// A long file of silence that takes no place on the disk.
TEST_F(ProgramSlicedEdit, RefusesWhatItCannotDoInSlices) {
  constexpr std::uintmax_t kFrames = 60'000'000;
  std::string head = waveFile("");
  const std::string size = littleEndian(4 * kFrames, 4);
  head.replace(40, 4, size);
  folder().write("long.wav", head);
  std::filesystem::resize_file(folder() / "long.wav", head.size() + 4 * kFrames);
  const auto end = run({"edit", "swap", "long.wav", "-o", "out.wav", "--memory", "0", "--then",
                        "cut '#29000000' '#30000000' --crossfade '#29000000'"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("long.wav: cut: the audio does not fit into memory, and so "
                                    "long a crossfade cannot be done without"));
  EXPECT_FALSE(std::filesystem::exists(folder() / "out.wav"));
}

}  // namespace
}  // namespace orvane::cli::test
