#include "orvane/speech/detector/speech_detection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "orvane/audio/audio_source.h"
#include "orvane/speech/detector/silero_vad_analyser.h"
#include "tests/speech/detector/speech_test_support.h"
#include "tests/support/in_child.h"
#include "tests/support/sanitized.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using Samples = std::vector<float>;
using Flags = std::optional<std::vector<bool>>;

/// Noise that comes and goes, some of which the detector takes for speech.
Samples bursts(std::size_t frames) {
  return test::burstyNoise(static_cast<std::uint32_t>(frames), 17);
}

class SpeechDetectionTest : public testing::Test {
 protected:
  Flags ofTheWhole(const Samples& samples, double rate, const SileroVADTuning& tuning) {
    return analyser_.classify(samples, rate, tuning);
  }

  SileroVADAnalyser analyser_{[](const VadManager::Config& config) {
    return std::make_unique<VadManager>(config, test::currentModel());
  }};
};

TEST_F(SpeechDetectionTest, FindsInPiecesWhatIsFoundInTheWhole) {
  const SileroVADTuning lenient{.threshold = 0.02F};
  for (const double rate : {11025.0, 16000.0, 48000.0})
    for (const std::size_t seconds : {1U, 9U, 31U}) {
      SCOPED_TRACE(testing::Message() << rate << " Hz, " << seconds << " s");
      const Samples samples = bursts(static_cast<std::size_t>(rate) * seconds + 123);
      for (const auto& tuning : {SileroVADTuning::defaults(), lenient}) {
        const Flags whole = ofTheWhole(samples, rate, tuning);
        const auto detection = analyser_.begin(rate, 1, tuning);
        ASSERT_TRUE(detection);
        std::mt19937 random(5);
        for (std::size_t first = 0; first < samples.size();) {
          const std::size_t piece = std::min(samples.size() - first, 1 + random() % 300'000);
          const float* const channel = samples.data() + first;
          detection->process({{&channel, 1}, piece}, 1 + random() % 2);
          first += piece;
        }
        EXPECT_EQ(detection->finish(), whole);
        EXPECT_EQ(detection->frameCount(), static_cast<std::int64_t>(samples.size()));
        const bool isFound = std::ranges::count(*whole, true) > 0;
        EXPECT_TRUE(isFound || tuning != lenient || seconds == 1) << "nothing to compare";
      }
    }
}

TEST_F(SpeechDetectionTest, ReadsTheRestOfASource) {
  const test::TemporaryDirectory folder;
  const RawPCMFormat format{
      .sampleRate = 22050, .channelCount = 1, .encoding = RawPCMFormat::Encoding::float32};
  for (const std::size_t frames : {std::size_t{1000}, std::size_t{1} << 20, std::size_t{1'300'001}})
    for (const std::size_t threads : {1U, 2U}) {
      const Samples samples = bursts(frames);
      const auto bytes = std::as_bytes(std::span(samples));
      const auto path = folder.write("a.raw", std::vector<std::byte>(bytes.begin(), bytes.end()));
      const auto detection = analyser_.begin(22050, 1, {.threshold = 0.02F});
      detectSpeech(*AudioSource::open(path, format), *detection, threads);
      EXPECT_EQ(detection->finish(), ofTheWhole(samples, 22050, {.threshold = 0.02F}));
    }
}

/// A header may claim many; each channel of a piece begins on memory of its own.
TEST_F(SpeechDetectionTest, TakesLittleMemoryForManyChannels) {
  if (test::isSanitized()) GTEST_SKIP() << "the memory is not the program's alone";
  const test::TemporaryDirectory folder;
  const auto path = folder.write("a.raw", std::vector<std::byte>(64 * 4096));
  const RawPCMFormat format{
      .sampleRate = 22050, .channelCount = 64, .encoding = RawPCMFormat::Encoding::uint8};
  const auto end = test::runInChild([&] {
    const long before = test::peakMemoryKiB();
    const auto detection = analyser_.begin(22050, 64, {});
    detectSpeech(*AudioSource::open(path, format), *detection, 1);
    return test::peakMemoryKiB() - before < 64 << 10 ? 0 : 1;
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(SpeechDetectionTest, FindsNothingWhereThereIsNoSample) {
  const auto detection = analyser_.begin(48000, 1, {});
  EXPECT_FALSE(detection->finish());
  EXPECT_FALSE(analyser_.begin(0, 1, {}));
  EXPECT_FALSE(analyser_.begin(48000, 0, {}));
}

TEST_F(SpeechDetectionTest, IsNotBegunWithoutAModel) {
  SileroVADAnalyser none([](const VadManager::Config&) { return nullptr; });
  EXPECT_FALSE(none.begin(48000, 1, {}));
  SileroVADAnalyser broken([](const VadManager::Config&) -> std::unique_ptr<VadManager> {
    throw SpeechModelError("a", "broken");
  });
  EXPECT_FALSE(broken.begin(48000, 1, {}));
}

}  // namespace
}  // namespace orvane
