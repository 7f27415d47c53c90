#include "orvane/core/generator/generator_spec.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace orvane::core {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The field that is complained of in the default specification after a change; empty if none.
std::string faultAfter(const std::function<void(GeneratorSpec&)>& change) {
  GeneratorSpec spec;
  change(spec);
  try {
    spec.validate();
  } catch (const GeneratorSpecError& error) {
    EXPECT_TRUE(error.errorDescription().ends_with('.')) << error.errorDescription();
    return error.field();
  }
  return "";
}

template <typename Value>
std::string faultOf(Value GeneratorSpec::*field, Value value,
                    GeneratorWaveform waveform = GeneratorWaveform::sine) {
  return faultAfter([&](GeneratorSpec& spec) {
    spec.waveform = waveform;
    spec.*field = value;
  });
}

TEST(GeneratorSpec, IsValidByDefaultForEveryWaveform) {
  for (int waveform = 0; waveform <= static_cast<int>(GeneratorWaveform::channelIdent); ++waveform)
    EXPECT_EQ(faultAfter([&](GeneratorSpec& spec) {
                spec.waveform = static_cast<GeneratorWaveform>(waveform);
              }),
              "");
}

TEST(GeneratorSpec, WantsFrequenciesBelowHalfTheSampleRate) {
  for (const double hertz : {0.0, -5.0, 24'000.0, 30'000.0, kInfinity, kNaN}) {
    EXPECT_EQ(faultOf(&GeneratorSpec::frequency, hertz), "frequency");
    EXPECT_EQ(faultOf(&GeneratorSpec::secondFrequency, hertz, GeneratorWaveform::dualTone),
              "secondFrequency");
    EXPECT_EQ(faultOf(&GeneratorSpec::startFrequency, hertz, GeneratorWaveform::linearSweep),
              "startFrequency");
    EXPECT_EQ(faultOf(&GeneratorSpec::endFrequency, hertz, GeneratorWaveform::logarithmicSweep),
              "endFrequency");
  }
  EXPECT_EQ(faultOf(&GeneratorSpec::frequency, 23'999.9), "");
  EXPECT_EQ(faultOf(&GeneratorSpec::frequency, 1e-6), "");
}

TEST(GeneratorSpec, WantsAPeriodOfPartialsThatFitsItsTable) {
  EXPECT_EQ(faultOf(&GeneratorSpec::frequency, 0.18, GeneratorWaveform::saw), "frequency");
  EXPECT_EQ(faultOf(&GeneratorSpec::frequency, 24'000.0 / 131'072, GeneratorWaveform::saw), "");
}

TEST(GeneratorSpec, WantsALevelButNotOneThatFits) {
  for (const double level : {kInfinity, -kInfinity, kNaN, 201.0}) {
    EXPECT_EQ(faultOf(&GeneratorSpec::levelDB, level), "levelDB");
    EXPECT_EQ(faultOf(&GeneratorSpec::secondLevelDB, level, GeneratorWaveform::dualTone),
              "secondLevelDB");
  }
  EXPECT_EQ(faultOf(&GeneratorSpec::levelDB, 6.0), "");
}

TEST(GeneratorSpec, WantsADurationThatHasFramesAndFits) {
  for (const double seconds : {0.0, -1.0, 1e-6, 1e6, kInfinity, kNaN})
    EXPECT_EQ(faultOf(&GeneratorSpec::durationSeconds, seconds), "durationSeconds") << seconds;
  EXPECT_EQ(faultOf(&GeneratorSpec::durationSeconds, 1.0 / 48'000), "");
}

TEST(GeneratorSpec, WantsRoomToNameEveryChannel) {
  const auto identOf = [](std::uint32_t channels, double seconds) {
    return faultAfter([&](GeneratorSpec& spec) {
      spec.waveform = GeneratorWaveform::channelIdent;
      spec.channelCount = channels;
      spec.durationSeconds = seconds;
    });
  };
  for (const auto& [channels, seconds] :
       {std::pair{1U, 0.5}, std::pair{2U, 1.2}, std::pair{6U, 6.0}, std::pair{8U, 9.6}}) {
    EXPECT_EQ(identOf(channels, seconds), "") << channels;
    EXPECT_EQ(identOf(channels, seconds - 0.01), "durationSeconds") << channels;
  }
}

TEST(GeneratorSpec, WantsARateAndChannels) {
  for (const double rate : {0.0, 99.0, 1e8, kInfinity, kNaN})
    EXPECT_EQ(faultOf(&GeneratorSpec::sampleRate, rate), "sampleRate") << rate;
  for (const std::uint32_t count : {0U, 1025U})
    EXPECT_EQ(faultOf(&GeneratorSpec::channelCount, count), "channelCount");
}

TEST(GeneratorSpec, WantsPhasesAndMasksOfItsChannels) {
  using Phases = std::vector<double>;
  using Mask = std::vector<bool>;
  EXPECT_EQ(faultOf(&GeneratorSpec::channelPhases, Phases{0, 90}), "channelPhases");
  EXPECT_EQ(faultOf(&GeneratorSpec::channelPhases, Phases{kNaN}), "channelPhases");
  EXPECT_EQ(faultOf(&GeneratorSpec::channelPhases, Phases{-90}), "");
  EXPECT_EQ(faultOf(&GeneratorSpec::channelMask, Mask{true, true}), "channelMask");
  EXPECT_EQ(faultOf(&GeneratorSpec::channelMask, Mask{false}), "channelMask");
}

TEST(GeneratorSpec, LooksOnlyAtWhatTheWaveformUses) {
  EXPECT_EQ(faultOf(&GeneratorSpec::frequency, kNaN, GeneratorWaveform::pinkNoise), "");
  EXPECT_EQ(faultOf(&GeneratorSpec::startFrequency, kNaN), "");
}

TEST(GeneratorSpec, SaysWhatIsWrong) {
  GeneratorSpec spec;
  spec.frequency = 30'000;
  try {
    spec.validate();
    FAIL();
  } catch (const GeneratorSpecError& error) {
    EXPECT_EQ(error.errorDescription(),
              "The frequency must lie above 0 and below 24000 Hz, half the sample rate, not at "
              "30000 Hz.");
  }
}

}  // namespace
}  // namespace orvane::core
