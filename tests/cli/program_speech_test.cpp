// Speech in `orvane analyze`: by the detector, or by the regions kept beside a file.
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"
#include "tests/cli/program_fixture.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class ProgramSpeech : public ProgramTest {
 protected:
  Json figures(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {"analyze", "--json", "good.wav"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto end = run(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return Json::parse(end.output);
  }
  void importLabels(const char* labels) const {
    folder().write("labels.txt", labels);
    const auto end = run({"dialogue", "import", "labels.txt", "good.wav"});
    ASSERT_EQ(end.exitCode, 0) << end.errors;
  }
};

TEST_F(ProgramSpeech, IsLeftOutUnasked) {
  EXPECT_FALSE(figures({"--curves"}).contains("speechHistory"));
  EXPECT_THAT(run({"analyze", "good.wav"}).output, Not(HasSubstr("Speech")));
}

TEST_F(ProgramSpeech, IsDetectedOnDemand) {
  const Json found = figures({"--speech", "--curves"});
  ASSERT_TRUE(found.contains("speechHistory")) << "run scripts/install-model for the speech model";
  EXPECT_EQ(found["speechHistory"].size(), 10U);
  EXPECT_EQ(found["speechPercentage"], 0);  // a sine is no speech
  EXPECT_TRUE(found["speechGatedLUFS"].is_null());
  EXPECT_THAT(run({"analyze", "--speech", "good.wav"}).output, HasSubstr("Speech share"));
}

TEST_F(ProgramSpeech, FollowsTheTuning) {
  // With a threshold of 0 everything is speech.
  EXPECT_EQ(figures({"--speech", "--vad-threshold", "0"})["speechPercentage"], 100);
  EXPECT_EQ(run({"analyze", "--speech", "--vad-threshold", "2", "good.wav"}).exitCode, 2);
}

TEST_F(ProgramSpeech, TakesTheRegionsBesideTheFile) {
  importLabels("0\t0.5\tAnna\n");
  const Json gated = figures({"--dialogue"});
  EXPECT_EQ(gated["speechPercentage"], 50);
  EXPECT_NEAR(gated["speechGatedLUFS"].get<double>(), gated["integratedLUFS"].get<double>(), 0.1);
}

TEST_F(ProgramSpeech, NeedsASidecarForItsDialogue) {
  const auto end = run({"analyze", "--dialogue", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, HasSubstr("good.wav"));
  EXPECT_EQ(run({"analyze", "--dialogue", "-"}).exitCode, 2);
  EXPECT_EQ(run({"analyze", "--dialogue", "--speech", "good.wav"}).exitCode, 2);
}

}  // namespace
}  // namespace orvane::cli::test
