#include "orvane/edit/pcm_write_settings.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(PCMWriteSettings, StatesEverythingAWriterAsksFor) {
  const AudioFormat format{.sampleRate = 44100,
                           .channelCount = 6,
                           .layout = ChannelLayout::fromTag(ChannelLayoutTags::mpeg51A)};
  for (const AudioContainer container : kAllAudioContainers) {
    const auto settings = PCMWriteSettings::make(container, format, {24, false});
    EXPECT_EQ(settings.fileTypeID, fileTypeID(container));
    EXPECT_EQ(settings.formatID, kFormatLinearPCM);
    EXPECT_EQ(settings.sampleRate, 44100);
    EXPECT_EQ(settings.channelCount, 6);
    EXPECT_EQ(settings.layout, format.layout);
    EXPECT_EQ(settings.linearPCMBitDepth, 24);
    EXPECT_EQ(settings.linearPCMIsFloat, false);
    EXPECT_EQ(settings.linearPCMIsBigEndian,
              container == AudioContainer::aiff || container == AudioContainer::aifc);
    EXPECT_EQ(PCMEncoding::fromFileFormat(settings), (PCMEncoding{24, false}));
  }
}

TEST(PCMWriteSettings, StatesFloatsAndNoLayoutWhereThereIsNone) {
  const auto settings = PCMWriteSettings::make(
      AudioContainer::wave, {.sampleRate = 48000, .channelCount = 1}, PCMEncoding::float32);
  EXPECT_EQ(settings.linearPCMIsFloat, true);
  EXPECT_EQ(settings.linearPCMBitDepth, 32);
  EXPECT_FALSE(settings.layout);
}

}  // namespace
}  // namespace orvane
