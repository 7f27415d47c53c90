// The same channels under the same layout chunk are equally loud, whatever their codec and
// container.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/core/channel_order.h"
#include "tests/support/layout_files.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

namespace files = test::LayoutFiles;

using enum ChannelLabel;
using test::Bytes;

/// Three seconds of noise, the channels 3 dB apart, so that an exchange of two is heard.
files::Words noise(std::uint32_t channels) {
  std::mt19937 random(channels);
  std::uniform_real_distribution<double> uniform(-1, 1);
  files::Words words;
  for (std::uint32_t frame = 0; frame < 3 * files::kRate; ++frame)
    for (std::uint32_t channel = 0; channel < channels; ++channel)
      words.push_back(static_cast<std::int16_t>(
          std::lround(20000 * uniform(random) * std::pow(10.0, -0.15 * channel))));
  return words;
}

class StatedLayoutLoudness : public testing::Test {
 protected:
  double loudnessOf(const Bytes& bytes) {
    const auto path = folder_.write("a.bin", bytes);
    return static_cast<double>(OfflineAnalysisPipeline::analyzeFile(path, {}).integratedLUFS);
  }

  /// Gives the loudness.
  double expectEqual(std::uint32_t channels, const Bytes& layout) {
    const files::Words words = noise(channels);
    const double expected = loudnessOf(files::cafPCM(channels, words, layout));
    constexpr double kTolerance = 0.03;  // LU; mu-law rounds
    EXPECT_NEAR(loudnessOf(files::cafMuLaw(channels, words, layout)), expected, kTolerance);
    EXPECT_NEAR(loudnessOf(files::aiffMuLaw(channels, words, layout)), expected, kTolerance);
    EXPECT_NEAR(loudnessOf(files::mov(channels, words, layout)), expected, kTolerance);
    return expected;
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(StatedLayoutLoudness, IsTheSameUnderEveryTag) {
  std::vector<double> loudness;
  for (const std::uint32_t identifier : {121U, 122U, 123U, 124U})  // MPEG 5.1 A to D
    loudness.push_back(expectEqual(6, test::layoutBody(identifier << 16 | 6)));
  for (const std::uint32_t identifier : {126U, 127U, 128U})  // MPEG 7.1 A to C
    loudness.push_back(expectEqual(8, test::layoutBody(identifier << 16 | 8)));
  // The order is heard: the LFE lies fourth in A and last in C.
  EXPECT_GT(std::abs(loudness[0] - loudness[2]), 0.1);
}

TEST_F(StatedLayoutLoudness, IsTheSameByDescriptionsBitmapsAndWithoutPlaces) {
  std::vector<std::uint32_t> labels;
  for (const ChannelLabel label : {rearSurroundLeft, rearSurroundRight, center, left, right, lfe})
    labels.push_back(static_cast<std::uint32_t>(label));
  expectEqual(6, test::layoutBody(ChannelLayoutTags::useChannelDescriptions, 0, labels));
  expectEqual(6, test::layoutBody(ChannelLayoutTags::useChannelBitmap, 0x3F));
  expectEqual(8, test::layoutBody(ChannelLayoutTags::discreteInOrder | 8));
}

TEST_F(StatedLayoutLoudness, IsTheSameUnderEveryWAVEMask) {
  for (const std::uint32_t mask : {0x3FU, 0x60FU, 0x63FU, 0xFFU, 0U}) {
    const auto channels = mask == 0x63F || mask == 0xFF ? 8U : 6U;
    const files::Words words = noise(channels);
    const auto wave = [&](std::uint16_t tag, std::uint16_t bits, const Bytes& samples) {
      return loudnessOf(test::waveFile({.tag = tag,
                                        .channels = static_cast<std::uint16_t>(channels),
                                        .bits = bits,
                                        .mask = mask},
                                       samples));
    };
    EXPECT_NEAR(wave(7, 8, files::muLaw(words)),
                wave(1, 16, files::linear(words, std::endian::little)), 0.03)
        << mask;
  }
}

}  // namespace
}  // namespace orvane
