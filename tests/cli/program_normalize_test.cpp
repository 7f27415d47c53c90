// Files that the program has normalized, as another meter hears them.

#include <random>

#include "tests/cli/program_fixture.h"
#include "tests/support/tool_runner.h"

namespace orvane::cli::test {
namespace {

/// Ten seconds of stereo noise that swells and ebbs, with a click at full scale each second.
std::string programme() {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> sample(-1, 1);
  std::string samples;
  for (int i = 0; i < 480'000; ++i) {
    const double level = 0.02 + 0.2 * std::pow(std::sin(1e-5 * i), 2);
    for (int channel = 0; channel < 2; ++channel) {
      const double x = i % 48'000 < 3 ? 1 : level * sample(random);
      samples += littleEndian(static_cast<std::uint16_t>(std::lround(32'767 * x)), 2);
    }
  }
  return waveFile(samples);
}

class ProgramNormalize : public ProgramTest {
 protected:
  ProgramNormalize() { folder().write("in.wav", programme()); }

  /// Integrated loudness by FFmpeg's ebur128.
  double loudnessByFFmpeg(const std::string& name) const {
    const auto figures = orvane::test::runTool(
        "ffmpeg",
        {"-v", "error", "-i", (folder() / name).string(), "-af",
         "ebur128=metadata=1:framelog=verbose,ametadata=print:file=-", "-f", "null", "-"});
    const std::string key = "lavfi.r128.I=";
    const auto last = figures.rfind(key);
    return last == std::string::npos ? 0 : std::stod(figures.substr(last + key.size()));
  }
};

TEST_F(ProgramNormalize, AnotherMeterReadsTheTarget) {
  const std::pair<const char*, const char*> cases[] = {{"-30", "f32"}, {"-16", "s16"}};
  for (const auto& [target, encoding] : cases) {
    const auto end = run({"edit", "normalize", "--target", target, "in.wav", "-o", "out.wav",
                          "--encoding", encoding, "--force", "--enforce"});
    ASSERT_EQ(end.exitCode, 0) << end.errors << end.output;
    EXPECT_NEAR(loudnessByFFmpeg("out.wav"), std::stod(target), 0.15) << encoding;
  }
}

TEST_F(ProgramNormalize, AnotherMeterReadsWhatIsSaidOfATargetThatIsMissed) {
  const auto end = run({"edit", "normalize", "--target", "-6", "--ceiling", "-9", "in.wav", "-o",
                        "out.wav", "--enforce", "--json"});
  EXPECT_EQ(end.exitCode, 3) << end.errors;
  const auto outcome = jsonLines(end.output).at(0)["normalizations"].at(0);
  EXPECT_FALSE(outcome["isTargetReached"]);
  EXPECT_NEAR(loudnessByFFmpeg("out.wav"), outcome["integratedLUFS"].get<double>(), 0.15);
}

}  // namespace
}  // namespace orvane::cli::test
