#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"

namespace orvane::test {

/// Equal where both are not a number, too.
inline std::vector<std::uint32_t> bitsOf(const std::vector<float>& values) {
  std::vector<std::uint32_t> bits;
  for (const float value : values) bits.push_back(std::bit_cast<std::uint32_t>(value));
  return bits;
}

/// Expects two results to agree to the bit in everything but the audio itself.
inline void expectSameFigures(const OfflineAnalysisPipeline::Result& a,
                              const OfflineAnalysisPipeline::Result& b) {
  EXPECT_EQ(a.durationSeconds, b.durationSeconds);
  EXPECT_EQ(a.fileFormat, b.fileFormat);
  EXPECT_EQ(a.bitDepth, b.bitDepth);
  EXPECT_EQ(a.integratedLUFS, b.integratedLUFS);
  EXPECT_EQ(a.loudnessRange, b.loudnessRange);
  EXPECT_EQ(a.truePeakDB, b.truePeakDB);
  EXPECT_EQ(a.samplePeakDB, b.samplePeakDB);
  EXPECT_EQ(a.dynamicRange, b.dynamicRange);
  EXPECT_EQ(a.speechGatedLUFS, b.speechGatedLUFS);
  EXPECT_EQ(a.speechPercentage, b.speechPercentage);
  EXPECT_EQ(a.speechHistory, b.speechHistory);
  EXPECT_EQ(a.loudnessCurve, b.loudnessCurve);
  EXPECT_EQ(a.stereoWidthCurve, b.stereoWidthCurve);
  EXPECT_EQ(bitsOf(a.channelPeakDB), bitsOf(b.channelPeakDB));
  EXPECT_EQ(bitsOf(a.channelRMSDB), bitsOf(b.channelRMSDB));
  EXPECT_EQ(bitsOf(a.channelDCOffset), bitsOf(b.channelDCOffset));
}

}  // namespace orvane::test
