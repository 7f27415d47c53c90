#include "orvane/speech/detector/silero_network.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <utility>

#include "orvane/platform/instruction_sets.h"
#include "tests/reference/silero_reference.h"
#include "tests/speech/detector/speech_test_support.h"

namespace orvane {
namespace {

using test::currentModel;
using test::olderModel;

/// Every published probability, the vector kernels and the reference agree within this.
constexpr double kTolerance = 1e-5;

std::vector<float> run(const SileroNetwork& network, const std::vector<float>& samples,
                       std::size_t threadCount = 1) {
  return network.stepProbabilities(samples, samples.size() / 512, {threadCount});
}

double worstDifference(const std::vector<float>& values, const std::vector<double>& expected) {
  EXPECT_EQ(values.size(), expected.size());
  double worst = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    EXPECT_TRUE(std::isfinite(values[i])) << i;
    worst = std::max(worst, std::abs(values[i] - expected[i]));
  }
  return worst;
}

class EveryInstructionSet : public testing::Test {
 protected:
  ~EveryInstructionSet() override { useBestInstructionSet(); }

  template <class Check>
  static void forEach(Check check) {
    for (const InstructionSet& set : availableInstructionSets()) {
      SCOPED_TRACE(set.name);
      forceInstructionSet(set);
      check();
    }
  }
};

using SileroNetworkTest = EveryInstructionSet;

/// What the widely used runtime computes from the published files.
struct Golden {
  std::vector<std::pair<std::size_t, double>> steps{};
};

void expectGolden(const std::filesystem::path& model, const Golden& golden) {
  const SileroNetwork network(loadSileroWeights(model));
  const auto probabilities = run(network, test::syntheticProgramme());
  ASSERT_EQ(probabilities.size(), 125U);
  for (const auto& [step, value] : golden.steps)
    EXPECT_NEAR(probabilities[step], value, kTolerance) << "step " << step;
}

TEST_F(SileroNetworkTest, GivesThePublishedProbabilitiesOfVersion62) {
  forEach([] {
    expectGolden(currentModel(), {{{0, 0.001670},
                                   {10, 0.005048},
                                   {30, 0.003643},
                                   {31, 0.064217},
                                   {32, 0.037373},
                                   {40, 0.015729},
                                   {61, 0.008321},
                                   {62, 0.292725},
                                   {63, 0.942157},
                                   {64, 0.902986},
                                   {80, 0.957861},
                                   {100, 0.927380},
                                   {124, 0.888202}}});
  });
}

TEST_F(SileroNetworkTest, GivesThePublishedProbabilitiesOfVersion51) {
  forEach([] {
    expectGolden(olderModel(), {{{0, 0.012012},
                                 {10, 0.002358},
                                 {30, 0.003150},
                                 {31, 0.022441},
                                 {32, 0.015301},
                                 {40, 0.007311},
                                 {61, 0.010196},
                                 {62, 0.344878},
                                 {63, 0.873175},
                                 {64, 0.871750},
                                 {80, 0.913721},
                                 {100, 0.830219},
                                 {124, 0.915829}}});
  });
}

TEST_F(SileroNetworkTest, KeepsQuietOnSilence) {
  const SileroNetwork network(loadSileroWeights(currentModel()));
  const auto probabilities = run(network, std::vector<float>(512 * 4000));
  EXPECT_NEAR(probabilities[0], 0.00167, kTolerance);
  for (const float p : probabilities) EXPECT_LT(p, 0.01F);
}

TEST_F(SileroNetworkTest, EqualsTheReferenceOnEveryInstructionSet) {
  const auto weights = loadSileroWeights(currentModel());
  const auto samples = test::burstyNoise(512 * 300, 7);
  const auto expected = test::SileroReference(weights).run(samples);
  const SileroNetwork network(weights);
  forEach([&] {
    const double worst = worstDifference(run(network, samples), expected);
    EXPECT_LT(worst, kTolerance);
    RecordProperty("worst", std::to_string(worst));
  });
}

TEST_F(SileroNetworkTest, MultipliesABasisThatIsNoFourierTransform) {
  const auto weights = test::randomWeights(3);
  const auto samples = test::burstyNoise(512 * 100, 11);
  const auto expected = test::SileroReference(weights).run(samples);
  const SileroNetwork network(weights);
  forEach([&] { EXPECT_LT(worstDifference(run(network, samples), expected), kTolerance); });
}

TEST_F(SileroNetworkTest, DoesNotDependOnTheNumberOfThreadsOrOnWhatFollows) {
  const SileroNetwork network(loadSileroWeights(currentModel()));
  const auto samples = test::burstyNoise(512 * 1000, 5);
  forEach([&] {
    const auto whole = run(network, samples);
    for (const std::size_t threads : {2U, 3U, 8U}) EXPECT_EQ(run(network, samples, threads), whole);
    for (const std::size_t steps : {1U, 47U, 48U, 49U, 500U}) {
      const std::vector<float> part(samples.begin(),
                                    samples.begin() + static_cast<std::ptrdiff_t>(steps * 512));
      const auto probabilities = run(network, part);
      EXPECT_EQ(
          probabilities,
          std::vector<float>(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(steps)));
    }
  });
}

TEST_F(SileroNetworkTest, RepeatsTheLastSampleBehindTheEnd) {
  const SileroNetwork network(loadSileroWeights(currentModel()));
  auto samples = test::burstyNoise(512 * 10 + 100, 9);
  const auto probabilities = network.stepProbabilities(samples, 64);
  samples.resize(512 * 64, samples.back());
  EXPECT_EQ(probabilities, run(network, samples));
}

TEST_F(SileroNetworkTest, TakesSamplesThatAreNoAudioForSilence) {
  const SileroNetwork network(loadSileroWeights(currentModel()));
  auto silenced = test::burstyNoise(512 * 40, 2);
  auto broken = silenced;
  const float bad[] = {std::numeric_limits<float>::quiet_NaN(),
                       std::numeric_limits<float>::infinity(), -1e30F, 3e9F};
  for (std::size_t i = 0; i < 200; ++i) {
    broken[i * 97] = bad[i % 4];
    silenced[i * 97] = 0;
  }
  EXPECT_EQ(run(network, broken), run(network, silenced));
}

TEST_F(SileroNetworkTest, StaysFiniteOnTheLoudestSamples) {
  const SileroNetwork network(loadSileroWeights(currentModel()));
  std::vector<float> samples(512 * 50);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = (i / 3) % 2 == 0 ? 1e9F : -1e9F;
  for (const float p : run(network, samples)) EXPECT_TRUE(p >= 0 && p <= 1);
}

TEST_F(SileroNetworkTest, GivesNothingForNoSteps) {
  const SileroNetwork network(test::randomWeights(1));
  EXPECT_TRUE(network.stepProbabilities({}, 0, {2}).empty());
  EXPECT_EQ(network.stepProbabilities({}, 3).size(), 3U);
}

TEST_F(SileroNetworkTest, StreamsInPiecesOfAnySize) {
  const SileroNetwork network(loadSileroWeights(currentModel()));
  constexpr std::size_t kTile = std::size_t{48} * 512;
  for (const std::size_t count : {kTile - 1, kTile, 2 * kTile + 63, 5 * kTile + 100}) {
    const auto samples = test::burstyNoise(static_cast<std::uint32_t>(count), 21);
    const std::size_t steps = (count + 4095) / 4096 * 8;
    const auto whole = network.stepProbabilities(samples, steps);
    for (const std::size_t longest : {700U, 40'000U, 1'000'000U}) {
      SCOPED_TRACE(testing::Message() << count << " samples, " << longest);
      std::mt19937 random(3);
      SileroNetwork::Stream stream(network);
      for (std::size_t first = 0; first < count;) {
        const std::size_t piece = std::min(count - first, 1 + random() % longest);
        stream.process(std::span(samples).subspan(first, piece), 1 + random() % 3);
        first += piece;
      }
      EXPECT_EQ(stream.finish(steps), whole);
    }
  }
}

TEST_F(SileroNetworkTest, StreamsNothing) {
  const SileroNetwork network(test::randomWeights(1));
  EXPECT_TRUE(SileroNetwork::Stream(network).finish(0).empty());
  EXPECT_EQ(SileroNetwork::Stream(network).finish(3), network.stepProbabilities({}, 3));
}

class Canceller : public ProgressObserver {
 public:
  void onProgress(std::string_view stage, double fraction) override {
    EXPECT_EQ(stage, "Detecting speech");
    EXPECT_GT(fraction, last_);
    last_ = fraction;
  }
  bool isCancelled() override { return last_ > cancelAfter; }
  double last() const { return last_; }
  double cancelAfter = 2;

 private:
  double last_ = 0;
};

TEST_F(SileroNetworkTest, ReportsItsProgressAndStopsWhenAsked) {
  const SileroNetwork network(loadSileroWeights(currentModel()));
  const std::vector<float> samples(512 * 2000);
  for (const std::size_t threads : {1U, 2U, 4U}) {
    Canceller patient;
    network.stepProbabilities(samples, 2000, {threads, &patient});
    EXPECT_EQ(patient.last(), 1);
    Canceller hasty;
    hasty.cancelAfter = 0.3;
    EXPECT_THROW(network.stepProbabilities(samples, 2000, {threads, &hasty}), Cancelled);
    EXPECT_LT(hasty.last(), 0.4);
  }
}

}  // namespace
}  // namespace orvane
