// Dither goes to what an edit has changed, and to what has to be rounded.

#include <random>

#include "tests/cli/program_fixture.h"
#include "tests/support/file_reading.h"
#include "tests/support/tool_runner.h"

namespace orvane::cli::test {
namespace {

constexpr std::size_t kFrames = 100'000;

class ProgramDither : public ProgramTest {
 protected:
  ProgramDither() {
    std::mt19937 random(11);
    std::string samples;
    for (std::size_t i = 0; i < 2 * kFrames; ++i) samples += littleEndian(random() & 0xFFFFU, 2);
    folder().write("in.wav", waveFile(samples));
  }

  /// The samples of both channels, in steps of 16 bits.
  std::vector<std::vector<float>> edited(std::vector<std::string> words,
                                         const std::string& output) const {
    words.insert(words.begin(), "edit");
    words.insert(words.end(), {"-o", output, "--force"});
    const auto end = run(words);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return read(output);
  }
  std::vector<std::vector<float>> read(const std::string& name) const {
    const auto buffer = orvane::test::readWhole(folder() / name);
    std::vector<std::vector<float>> channels;
    for (std::uint32_t c = 0; c < buffer->channelCount(); ++c)
      for (auto& channel = channels.emplace_back(); const float x : buffer->view().samples(c))
        channel.push_back(x * 32'768);
    return channels;
  }
};

/// Which frames of a channel are others, first and one behind the last; both 0 for none.
std::pair<std::size_t, std::size_t> difference(const std::vector<float>& a,
                                               const std::vector<float>& b) {
  EXPECT_EQ(a.size(), b.size());
  std::pair<std::size_t, std::size_t> range{0, 0};
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i] == b[i]) continue;
    if (range.second == 0) range.first = i;
    range.second = i + 1;
  }
  return range;
}

TEST_F(ProgramDither, GoesToWhatAnEditHasChanged) {
  const auto source = read("in.wav");
  // The same container keeps stored samples, another one has them all written anew.
  for (const char* output : {"out.wav", "out.aiff", "out.caf"}) {
    const std::vector<std::string> gain = {"gain", "-6",     "--from", "#30000",
                                           "--to", "#60000", "in.wav"};
    auto withDither = gain;
    withDither.insert(withDither.end(), {"--dither", "tpdf"});
    const auto plain = edited(gain, output);
    const auto dithered = edited(withDither, output);
    for (std::size_t c = 0; c < 2; ++c) {
      const auto changed = difference(dithered[c], source[c]);
      EXPECT_GE(changed.first, 30'000U) << output;
      EXPECT_LE(changed.second, 60'000U) << output;
      const auto noise = difference(dithered[c], plain[c]);
      EXPECT_LT(noise.first, 30'020U) << output;
      EXPECT_GT(noise.second, 59'980U) << output;
    }
  }
}

TEST_F(ProgramDither, LeavesAloneWhatOnlyMoved) {
  const auto source = read("in.wav");
  for (const char* output : {"out.wav", "out.aiff"}) {
    const auto trimmed = edited({"trim", "#10", "#90010", "in.wav", "--dither", "tpdf"}, output);
    EXPECT_EQ(trimmed[1], std::vector<float>(source[1].begin() + 10, source[1].begin() + 90'010));

    // But the crossfade is of new samples.
    const std::vector<std::string> cut = {"cut",    "#40000",      "#50000",
                                          "in.wav", "--crossfade", "#1000"};
    auto withDither = cut;
    withDither.insert(withDither.end(), {"--dither", "tpdf"});
    const auto noise = difference(edited(withDither, output)[0], edited(cut, output)[0]);
    EXPECT_GE(noise.first, 39'000U) << output;
    EXPECT_LT(noise.first, 39'050U) << output;
    EXPECT_LE(noise.second, 40'000U) << output;
    EXPECT_GT(noise.second, 39'950U) << output;
  }
}

TEST_F(ProgramDither, GoesToOneChannelOfAFileThatIsSplit) {
  const auto end = run({"edit", "gain", "-6", "--from", "#30000", "--to", "#60000", "in.wav", "-o",
                        "out.wav", "--dither", "tpdf", "--then", "split"});
  ASSERT_EQ(end.exitCode, 0) << end.errors;
  const auto changed = difference(read("out.R.wav")[0], read("in.wav")[1]);
  EXPECT_GE(changed.first, 30'000U);
  EXPECT_LE(changed.second, 60'000U);
}

TEST_F(ProgramDither, GoesToAllThatIsRounded) {
  const std::vector<std::string> swap = {"gain", "0", "in.wav", "--encoding", "u8"};
  auto withDither = swap;
  withDither.insert(withDither.end(), {"--dither", "tpdf"});
  const auto noise = difference(edited(withDither, "out.wav")[0], edited(swap, "out.wav")[0]);
  EXPECT_LT(noise.first, 50U);
  EXPECT_GT(noise.second, kFrames - 50);
}

TEST_F(ProgramDither, LeavesAloneWhatALosslessCodecHolds) {
  orvane::test::runTool("ffmpeg", {"-v", "error", "-i", (folder() / "in.wav").string(),
                                   (folder() / "in.flac").string()});
  const auto result = edited({"trim", "#10", "#90010", "in.flac", "--dither", "tpdf"}, "out.wav");
  const auto source = read("in.wav");
  EXPECT_EQ(result[0], std::vector<float>(source[0].begin() + 10, source[0].begin() + 90'010));
}

}  // namespace
}  // namespace orvane::cli::test
