#include "orvane/container/pcm_encoding.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(PCMEncoding, IsLabelledByDepthAndKind) {
  EXPECT_EQ((PCMEncoding{24, false}.label()), "24-bit integer");
  EXPECT_EQ(PCMEncoding::float32.label(), "32-bit float");
}

TEST(PCMEncoding, ComparesByItsFields) {
  EXPECT_EQ((PCMEncoding{32, true}), PCMEncoding::float32);
  EXPECT_NE((PCMEncoding{32, false}), PCMEncoding::float32);
  EXPECT_NE((PCMEncoding{64, true}), PCMEncoding::float32);
}

TEST(PCMEncoding, FollowsFromALinearPCMFormatOfKnownDepth) {
  AudioFormatSettings format{.formatID = kFormatLinearPCM, .linearPCMBitDepth = 16};
  EXPECT_EQ(PCMEncoding::fromFileFormat(format), (PCMEncoding{16, false}));
  format.linearPCMIsFloat = true;
  format.linearPCMBitDepth = 64;
  EXPECT_EQ(PCMEncoding::fromFileFormat(format), (PCMEncoding{64, true}));
  format.linearPCMIsFloat = false;
  EXPECT_EQ(PCMEncoding::fromFileFormat(format), (PCMEncoding{64, false}));
}

TEST(PCMEncoding, IsAbsentWithoutADepthOrForOtherFormats) {
  AudioFormatSettings format{.formatID = kFormatLinearPCM};
  EXPECT_FALSE(PCMEncoding::fromFileFormat(format));
  for (const int depth : {0, -1}) {
    format.linearPCMBitDepth = depth;
    EXPECT_FALSE(PCMEncoding::fromFileFormat(format));
  }
  format.linearPCMBitDepth = 16;
  format.formatID = fourCCFrom("aac ");
  EXPECT_FALSE(PCMEncoding::fromFileFormat(format));
  format.formatID.reset();
  EXPECT_FALSE(PCMEncoding::fromFileFormat(format));
}

}  // namespace
}  // namespace orvane
