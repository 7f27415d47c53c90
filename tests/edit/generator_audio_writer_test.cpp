#include "orvane/edit/generator_audio_writer.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "orvane/container/audio_file.h"
#include "orvane/core/generator/signal_generator.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using core::GeneratorBitDepth;
using core::GeneratorContainer;
using core::GeneratorSpec;
using GeneratorAudioWriter::WriterError;
using Channels = std::vector<std::vector<float>>;

class GeneratorAudioWriterTest : public testing::Test {
 protected:
  std::filesystem::path target() const { return folder_ / "signal"; }
  const test::TemporaryDirectory& folder() const { return folder_; }

  /// The error that writing gives; nothing may stand under the name then.
  WriterError refused(const Channels& channels, GeneratorBitDepth depth,
                      GeneratorContainer container) const {
    try {
      GeneratorAudioWriter::write(channels, 48000, depth, container, target());
    } catch (const WriterError& error) {
      EXPECT_FALSE(std::filesystem::exists(target()));
      return error;
    }
    ADD_FAILURE() << "was written";
    return WriterError(WriterError::Case::ragged);
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(GeneratorAudioWriterTest, DescribesEveryError) {
  using Case = WriterError::Case;
  EXPECT_EQ(WriterError::unsupportedFormat("Pick another.").errorDescription(), "Pick another.");
  EXPECT_EQ(WriterError::bufferBuildFailed(7).errorDescription(),
            "Couldn't build a 7-channel output buffer.");
  EXPECT_EQ(WriterError::writeFailed("no space").errorDescription(),
            "Couldn't write the file: no space");
  EXPECT_EQ(WriterError(Case::noChannels).errorDescription(), "The render produced no channels.");
  EXPECT_EQ(WriterError(Case::emptyBuffer).errorDescription(), "The render produced no samples.");
  EXPECT_EQ(WriterError(Case::ragged).errorDescription(),
            "Channels have unequal lengths; render output must be rectangular.");
  EXPECT_EQ(WriterError::bufferBuildFailed(7), WriterError::bufferBuildFailed(7));
  EXPECT_FALSE(WriterError::bufferBuildFailed(7) == WriterError::bufferBuildFailed(8));
}

TEST_F(GeneratorAudioWriterTest, ChecksTheChannelsBeforeTheFormat) {
  using Case = WriterError::Case;
  const auto floats = GeneratorBitDepth::float32;
  const auto aiff = GeneratorContainer::aiff;
  EXPECT_EQ(refused({}, floats, aiff).errorCase(), Case::noChannels);
  EXPECT_EQ(refused({{}, {1.0F}}, floats, aiff).errorCase(), Case::emptyBuffer);
  EXPECT_EQ(refused({{1.0F}, {}}, floats, aiff).errorCase(), Case::ragged);
  EXPECT_EQ(refused({{1.0F, 0.0F}, {1.0F}}, floats, aiff).errorCase(), Case::ragged);
  EXPECT_EQ(refused({{1.0F}}, floats, aiff),
            WriterError::unsupportedFormat("AIFF stores integer PCM only. Pick 16- or 24-bit, or "
                                           "use WAV or CAF for 32-bit float."));
}

TEST_F(GeneratorAudioWriterTest, WritesEveryContainerAndDepth) {
  const Channels channels = {{0.0F, 0.5F, -1.0F}, {0.25F, -0.25F, 0.0F}};
  for (const auto container :
       {GeneratorContainer::wav, GeneratorContainer::aiff, GeneratorContainer::caf})
    for (const auto depth :
         {GeneratorBitDepth::int16, GeneratorBitDepth::int24, GeneratorBitDepth::float32}) {
      const bool isFloat = depth == GeneratorBitDepth::float32;
      if (container == GeneratorContainer::aiff && isFloat) continue;
      GeneratorAudioWriter::write(channels, 44100, depth, container, target());
      const auto file = AudioFile::open(target());
      const StreamDescription& format = file->description().dataFormat;
      EXPECT_EQ(file->description().fileTypeID,
                container == GeneratorContainer::wav    ? fourCCFrom("WAVE")
                : container == GeneratorContainer::aiff ? fourCCFrom("AIFF")
                                                        : fourCCFrom("caff"));
      EXPECT_EQ(format.sampleRate, 44100);
      EXPECT_EQ(format.bitsPerChannel, isFloat                             ? 32U
                                       : depth == GeneratorBitDepth::int16 ? 16U
                                                                           : 24U);
      EXPECT_EQ((format.formatFlags & kFormatFlagIsBigEndian) != 0,
                container == GeneratorContainer::aiff);
      test::expectSamples(*test::readWhole(*file), {0.0, 0.25, 0.5, -0.25, -1.0, 0.0});
    }
}

TEST_F(GeneratorAudioWriterTest, LabelsNoChannel) {
  const Channels eight(8, std::vector<float>(10));
  GeneratorAudioWriter::write(eight, 48000, GeneratorBitDepth::int24, GeneratorContainer::caf,
                              target());
  EXPECT_EQ(AudioFile::open(target())->description().layout,
            ChannelLayout::fromTag(ChannelLayoutTags::discreteInOrder | 8));
  GeneratorAudioWriter::write(eight, 48000, GeneratorBitDepth::int24, GeneratorContainer::wav,
                              target());
  EXPECT_FALSE(AudioFile::open(target())->description().layout);
}

TEST_F(GeneratorAudioWriterTest, WritesWhatIsRendered) {
  const GeneratorSpec spec{.waveform = core::GeneratorWaveform::square,
                           .durationSeconds = 0.1,
                           .channelCount = 2,
                           .bitDepth = GeneratorBitDepth::float32};
  GeneratorAudioWriter::renderAndWrite(spec, target());
  const auto buffer = test::readWhole(target());
  const auto rendered = core::SignalGenerator::render(spec);
  ASSERT_EQ(buffer->channelCount(), 2U);
  for (std::size_t c = 0; c < 2; ++c)
    EXPECT_TRUE(std::ranges::equal(buffer->view().samples(c), rendered[c]));
}

TEST_F(GeneratorAudioWriterTest, PassesOnWhatIsWrongWithTheSpecification) {
  EXPECT_THROW(GeneratorAudioWriter::renderAndWrite({.frequency = -1}, target()),
               core::GeneratorSpecError);
  EXPECT_FALSE(std::filesystem::exists(target()));
}

TEST_F(GeneratorAudioWriterTest, TellsWhyAFileCannotBeWritten) {
  const auto missing = folder() / "missing/signal.wav";
  try {
    GeneratorAudioWriter::write({{0.0F}}, 48000, GeneratorBitDepth::int16, GeneratorContainer::wav,
                                missing);
    FAIL();
  } catch (const WriterError& error) {
    EXPECT_EQ(error, WriterError::writeFailed("signal.wav: No such file or directory"));
  }
  test::writeFile(target(), "old");
  EXPECT_THROW(
      GeneratorAudioWriter::write({{0.0F}}, 48000, GeneratorBitDepth::int16,
                                  GeneratorContainer::wav, target(), AtomicFile::Existing::refuse),
      WriterError);
  EXPECT_EQ(test::readFile(target()), "old");
}

}  // namespace
}  // namespace orvane
