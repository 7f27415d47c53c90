#include "orvane/edit/audio_copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "orvane/edit/pcm_write_settings.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using Encoding = RawPCMFormat::Encoding;
using Endianness = RawPCMFormat::Endianness;

constexpr std::int64_t kFrames = 70'001;  // more than one piece

class AudioCopy : public testing::Test {
 protected:
  /// The audio part of what headerless noise becomes.
  std::string copied(const std::string& bytes, const RawPCMFormat& format, PCMEncoding encoding,
                     AudioContainer container, Execution execution = {}) {
    const auto source = AudioSource::open(test::writeFile(folder_ / "raw", bytes), format);
    const auto settings = PCMWriteSettings::make(container, source->format(), encoding);
    PCMFileWriter writer(folder_ / "copy", settings, source->frameLength());
    copyAudio(*source, writer, execution);
    writer.commit();
    const auto file = test::readFile(folder_ / "copy");
    const std::size_t head =
        PCMFileWriter::outline("copy", settings, source->frameLength()).head.size();
    return file.substr(
        head, static_cast<std::size_t>(kFrames * format.channelCount * encoding.bitDepth / 8));
  }

  static std::string noise(std::size_t bytes) {
    std::mt19937 random(5);
    std::string text(bytes, ' ');
    for (char& c : text) c = static_cast<char>(random());
    return text;
  }

 private:
  test::TemporaryDirectory folder_;
};

std::string turned(std::string bytes, std::size_t width) {
  for (std::size_t i = 0; i < bytes.size(); i += width)
    std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                 bytes.begin() + static_cast<std::ptrdiff_t>(i + width));
  return bytes;
}

TEST_F(AudioCopy, KeepsEveryBitOfSamplesThatAFloatWouldNotHold) {
  for (const auto encoding : {Encoding::int32, Encoding::float64})
    for (const auto endianness : {Endianness::little, Endianness::big}) {
      const RawPCMFormat format{
          .sampleRate = 48000, .channelCount = 2, .encoding = encoding, .endianness = endianness};
      const auto width = static_cast<std::size_t>(bytesPerSample(encoding));
      const std::string bytes = noise(static_cast<std::size_t>(kFrames) * 2 * width);
      const PCMEncoding stored{static_cast<std::int64_t>(8 * width), encoding == Encoding::float64};
      const bool isLittle = endianness == Endianness::little;
      EXPECT_TRUE(copied(bytes, format, stored, AudioContainer::wave) ==
                  (isLittle ? bytes : turned(bytes, width)));
      EXPECT_TRUE(copied(bytes, format, stored, AudioContainer::aifc) ==
                  (isLittle ? turned(bytes, width) : bytes));
    }
}

TEST_F(AudioCopy, InterleavesPlanarSamplesAsTheyAre) {
  const RawPCMFormat format{.sampleRate = 48000,
                            .channelCount = 3,
                            .encoding = Encoding::int32,
                            .isPlanar = true,
                            .headerSkipBytes = 7};
  const std::string samples = noise(static_cast<std::size_t>(kFrames) * 3 * 4);
  std::string expected;
  for (std::size_t frame = 0; frame < kFrames; ++frame)
    for (std::size_t channel = 0; channel < 3; ++channel)
      expected += samples.substr((channel * kFrames + frame) * 4, 4);
  EXPECT_TRUE(copied("HEADER!" + samples, format, {32, false}, AudioContainer::caf) == expected);
}

TEST_F(AudioCopy, PutsChannelsIntoTheOrderOfTheFile) {
  // 7.1 C: L R C LFE Ls Rs Rls Rrs; WAVE has the rear pair before the side pair.
  const RawPCMFormat format{.sampleRate = 48000, .channelCount = 8, .encoding = Encoding::int32};
  const std::string samples = noise(static_cast<std::size_t>(kFrames) * 8 * 4);
  const std::string stored = copied(samples, format, {32, false}, AudioContainer::wave);
  for (const std::size_t frame : {0U, 1U, 70'000U})
    for (std::size_t channel = 0; channel < 8; ++channel) {
      constexpr std::size_t kOrder[] = {0, 1, 2, 3, 6, 7, 4, 5};
      EXPECT_EQ(stored.substr((frame * 8 + channel) * 4, 4),
                samples.substr((frame * 8 + kOrder[channel]) * 4, 4));
    }
}

TEST_F(AudioCopy, ConvertsEverythingElse) {
  const RawPCMFormat format{.sampleRate = 48000, .channelCount = 1, .encoding = Encoding::int16};
  const std::string samples = noise(static_cast<std::size_t>(kFrames) * 2);
  EXPECT_TRUE(copied(samples, format, {16, false}, AudioContainer::wave) == samples);
  const std::string wider = copied(samples, format, {24, false}, AudioContainer::wave);
  EXPECT_EQ(wider.substr(0, 6), std::string(1, '\0') + samples.substr(0, 2) + std::string(1, '\0') +
                                    samples.substr(2, 2));
}

TEST_F(AudioCopy, CanBeStopped) {
  class Refuser : public ProgressObserver {
    void onProgress(std::string_view, double) override {}
    bool isCancelled() override { return true; }
  } refuser;
  const RawPCMFormat format{.sampleRate = 48000, .channelCount = 1, .encoding = Encoding::int32};
  EXPECT_THROW(copied(noise(static_cast<std::size_t>(kFrames) * 4), format, {32, false},
                      AudioContainer::wave, {.observer = &refuser}),
               Cancelled);
}

}  // namespace
}  // namespace orvane
