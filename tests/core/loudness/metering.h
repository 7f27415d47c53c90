#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "orvane/core/loudness/k_weighting.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "tests/support/programme.h"

/// Running the meter over a programme, and comparing levels.
namespace orvane::core::metering {

/// Everything a meter tells after a programme.
struct Figures {
  std::vector<double> blockPowers{};
  std::vector<LoudnessHistoryEntry> history{};
  float integrated = 0, range = 0, truePeak = 0;
  std::vector<float> channelPeaks{};

  bool operator==(const Figures&) const = default;
};

/// How many frames the next piece has, of those that are left.
using Cutter = std::function<std::size_t(std::size_t framesLeft)>;

inline std::size_t inOnePiece(std::size_t framesLeft) {
  return framesLeft;
}

inline Cutter inPiecesOf(std::size_t frames) {
  return [frames](std::size_t framesLeft) { return std::min(frames, framesLeft); };
}

inline Figures figuresOf(const LoudnessProcessor& meter) {
  return {meter.blockPowers(),   meter.history(),    meter.integratedLUFS(),
          meter.loudnessRange(), meter.truePeakDB(), meter.channelTruePeaksDB()};
}

inline Figures measure(const test::Programme& programme,
                       std::optional<std::vector<float>> weights = std::nullopt,
                       const Cutter& cutter = inOnePiece) {
  LoudnessProcessor meter(programme.sampleRate,
                          static_cast<std::uint32_t>(programme.channels.size()), std::nullopt,
                          std::move(weights));
  meter.isRecording = true;
  const std::size_t frames = programme.frameCount();
  for (std::size_t done = 0; done < frames;) {
    const std::size_t count = cutter(frames - done);
    meter.updateTruePeak(programme.pointers(done), count);
    meter.process(programme.pointers(done), count);
    done += count;
  }
  meter.flushPartialBlock();
  return figuresOf(meter);
}

/// Levels below this are silence: further below any sample format than any sound is above it.
inline constexpr double kFloorLUFS = -200;

inline void expectSameLevel(double actual, double expected, double tolerance, const char* what,
                            std::size_t index = 0) {
  EXPECT_NEAR(std::max(actual, kFloorLUFS), std::max(expected, kFloorLUFS), tolerance)
      << what << ", index " << index;
}

inline void expectSamePowers(std::span<const double> actual, std::span<const double> expected,
                             double toleranceLU) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i)
    expectSameLevel(loudnessOfPower(actual[i]), loudnessOfPower(expected[i]), toleranceLU,
                    "block power", i);
}

}  // namespace orvane::core::metering
