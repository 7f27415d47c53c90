#include "orvane/core/loudness/k_weighting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>

namespace orvane::core {
namespace {

/// Gain of both stages, in decibels.
double gainDB(const KWeighting& k, double hertz, double sampleRate) {
  const std::complex<double> z1 = std::polar(1.0, -2 * std::numbers::pi * hertz / sampleRate);
  const auto z2 = z1 * z1;
  const auto shelf =
      (k.shelfB0 + k.shelfB1 * z1 + k.shelfB2 * z2) / (1.0 + k.shelfA1 * z1 + k.shelfA2 * z2);
  const auto pass = (1.0 - 2.0 * z1 + z2) / (1.0 + k.highPassA1 * z1 + k.highPassA2 * z2);
  return 20 * std::log10(std::abs(shelf * pass));
}

// Pinned by the standard: BS.1770-5, Annex 1, Tables 1 and 2, which give fourteen decimals.
TEST(KWeighting, HasTheStandardsCoefficientsAt48kHz) {
  const KWeighting k = designKWeighting(48000);
  EXPECT_NEAR(k.shelfB0, 1.53512485958697, 1e-14);
  EXPECT_NEAR(k.shelfB1, -2.69169618940638, 1e-14);
  EXPECT_NEAR(k.shelfB2, 1.19839281085285, 1e-14);
  EXPECT_NEAR(k.shelfA1, -1.69065929318241, 1e-14);
  EXPECT_NEAR(k.shelfA2, 0.73248077421585, 1e-14);
  EXPECT_NEAR(k.highPassA1, -1.99004745483398, 1e-14);
  EXPECT_NEAR(k.highPassA2, 0.99007225036621, 1e-14);
}

// Physical: the same response as at 48 kHz up to 0.4 of the lower of both rates, as near as the
// common prototype comes. The bilinear transform bends the shelf's edge at low rates, and the
// high-pass numerator of 1, −2, 1 moves the whole response by up to 0.22 dB at 8 kHz.
TEST(KWeighting, KeepsTheResponseAtOtherRates) {
  struct Bound {
    double sampleRate, decibels;
  };
  const KWeighting standard = designKWeighting(48000);
  for (const auto& [rate, bound] :
       {Bound{8000, 0.51}, Bound{11025, 0.30}, Bound{16000, 0.16}, Bound{22050, 0.09},
        Bound{32000, 0.05}, Bound{44100, 0.05}, Bound{88200, 0.05}, Bound{96000, 0.05},
        Bound{176400, 0.05}, Bound{192000, 0.05}, Bound{384000, 0.05}, Bound{768000, 0.05}}) {
    const KWeighting k = designKWeighting(rate);
    for (double hertz = 20; hertz < 0.4 * std::min(rate, 48000.0); hertz *= 1.07)
      EXPECT_NEAR(gainDB(k, hertz, rate), gainDB(standard, hertz, 48000), bound)
          << hertz << " Hz at " << rate;
  }
}

TEST(KWeighting, RaisesTheCalibrationToneByWhatTheOffsetTakesBack) {
  EXPECT_NEAR(gainDB(designKWeighting(48000), 997, 48000), 0.691, 0.0005);
}

TEST(KWeighting, TurnsPowerIntoLoudnessAndBack) {
  EXPECT_NEAR(loudnessOfPower(1.0), -0.691, 1e-12);
  EXPECT_NEAR(loudnessOfPower(0.1), -10.691, 1e-12);
  EXPECT_NEAR(powerOfLoudness(-0.691), 1.0, 1e-12);
  for (double lufs = -120; lufs < 20; lufs += 3.7)
    EXPECT_NEAR(loudnessOfPower(powerOfLoudness(lufs)), lufs, 1e-11);
}

TEST(KWeighting, HasNoLoudnessForNoPower) {
  constexpr double kMinusInfinity = -std::numeric_limits<double>::infinity();
  EXPECT_EQ(loudnessOfPower(0), kMinusInfinity);
  EXPECT_EQ(loudnessOfPower(-1), kMinusInfinity);
  EXPECT_EQ(loudnessOfPower(std::numeric_limits<double>::quiet_NaN()), kMinusInfinity);
  EXPECT_EQ(powerOfLoudness(kMinusInfinity), 0.0);
}

}  // namespace
}  // namespace orvane::core
