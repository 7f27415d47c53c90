#include "orvane/container/sniff/mpeg_frame.h"

#include <gtest/gtest.h>

#include <array>

namespace orvane {
namespace {

std::optional<MPEGFrameHeader> read(unsigned second, unsigned third, unsigned fourth = 0x44) {
  const std::array bytes = {std::byte{0xFF}, static_cast<std::byte>(second),
                            static_cast<std::byte>(third), static_cast<std::byte>(fourth)};
  return readMPEGFrameHeader(bytes);
}

TEST(MPEGFrame, TellsItsLayerRateChannelsAndLength) {
  const auto stereo = read(0xFB, 0x90);
  ASSERT_TRUE(stereo);
  EXPECT_EQ(*stereo, (MPEGFrameHeader{.isMPEG1 = true,
                                      .layer = 3,
                                      .sampleRate = 44100,
                                      .channelCount = 2,
                                      .hasChecksum = false,
                                      .byteCount = 417}));
  EXPECT_EQ(read(0xFB, 0x92)->byteCount, 418U);  // padded
  const auto mono = read(0xFA, 0xE8, 0xC4);
  ASSERT_TRUE(mono);
  EXPECT_EQ(*mono, (MPEGFrameHeader{.isMPEG1 = true,
                                    .layer = 3,
                                    .sampleRate = 32000,
                                    .channelCount = 1,
                                    .hasChecksum = true,
                                    .byteCount = 1440}));
  EXPECT_EQ(read(0xF3, 0x14)->byteCount, 24U);     // 8 kbit/s at 24 kHz
  EXPECT_EQ(read(0xE3, 0xE8)->sampleRate, 8000U);  // MPEG-2.5
  EXPECT_EQ(read(0xE3, 0xE8)->byteCount, 1440U);   // 160 kbit/s
  EXPECT_EQ(read(0xFD, 0xA4)->layer, 2U);
  EXPECT_EQ(read(0xFD, 0xA4)->byteCount, 576U);  // 192 kbit/s at 48 kHz
  EXPECT_EQ(read(0xFF, 0xC4)->layer, 1U);
  EXPECT_EQ(read(0xFF, 0xC4)->byteCount, 384U);
}

TEST(MPEGFrame, IsNoneWithoutALengthOrWithReservedValues) {
  EXPECT_FALSE(read(0xDB, 0x90));  // no sync word
  EXPECT_FALSE(read(0xEB, 0x90));  // version
  EXPECT_FALSE(read(0xF9, 0x90));  // layer
  EXPECT_FALSE(read(0xFB, 0x9C));  // sampling rate
  EXPECT_FALSE(read(0xFB, 0xF0));  // bit rate
  EXPECT_FALSE(read(0xFB, 0x00));  // free format
  const std::array shortened = {std::byte{0xFF}, std::byte{0xFB}, std::byte{0x90}};
  EXPECT_FALSE(readMPEGFrameHeader(shortened));
}

}  // namespace
}  // namespace orvane
