// Whose layout counts: where the codec does not order its channels, what the container says does,
// whoever decodes.

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/audio_file.h"
#include "tests/support/container_writer.h"
#include "tests/support/layout_files.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

namespace files = test::LayoutFiles;

using test::Bytes;
using enum ChannelLabel;
using Labels = std::vector<ChannelLabel>;

constexpr std::uint32_t kFrames = 1000;

test::LayoutFiles::Words silence(std::uint32_t channels) {
  return test::LayoutFiles::Words(std::size_t{kFrames} * channels);
}

class StatedLayout : public testing::Test {
 protected:
  std::optional<Labels> labelsOf(const Bytes& bytes) {
    const auto file = AudioFile::open(folder_.write("a.bin", bytes));
    EXPECT_EQ(file->frameLength(), kFrames);
    const auto& layout = file->description().layout;
    return layout ? std::optional(layout->labels) : std::nullopt;
  }

  void expectInEveryFile(std::uint32_t channels, const Bytes& layout,
                         const std::optional<Labels>& labels) {
    EXPECT_EQ(labelsOf(files::cafPCM(channels, silence(channels), layout)), labels) << "PCM in CAF";
    EXPECT_EQ(labelsOf(files::cafMuLaw(channels, silence(channels), layout)), labels)
        << "mu-law in CAF";
    EXPECT_EQ(labelsOf(files::aiffMuLaw(channels, silence(channels), layout)), labels)
        << "mu-law in AIFF-C";
    EXPECT_EQ(labelsOf(files::mov(channels, silence(channels), layout)), labels) << "PCM in MOV";
  }

  test::TemporaryDirectory folder_;
};

/// MPEG 5.1 B in MOV or as mu-law was taken for L R C LFE Ls Rs, a LU off; 7.1 C had its pairs
/// exchanged, and the orders of WAVE 7.1 had no names.
TEST_F(StatedLayout, OfATagCountsForEveryCodec) {
  struct Tag {
    std::uint32_t identifier;
    Labels labels;
  };
  const Labels mpeg51A = {left, right, center, lfe, leftSurround, rightSurround};
  const std::vector<Tag> tags = {
      {121, mpeg51A},
      {122, {left, right, leftSurround, rightSurround, center, lfe}},
      {123, {left, center, right, leftSurround, rightSurround, lfe}},
      {124, {center, left, right, leftSurround, rightSurround, lfe}},
      {126, {left, right, center, lfe, leftSurround, rightSurround, leftCenter, rightCenter}},
      {127, {center, leftCenter, rightCenter, left, right, leftSurround, rightSurround, lfe}},
      {128,
       {left, right, center, lfe, leftSurround, rightSurround, rearSurroundLeft,
        rearSurroundRight}},
      {189,
       {left, right, center, lfe, rearSurroundLeft, rearSurroundRight, leftSurround,
        rightSurround}}};
  for (const auto& [identifier, labels] : tags) {
    SCOPED_TRACE(identifier);
    const auto channels = static_cast<std::uint32_t>(labels.size());
    expectInEveryFile(channels, test::layoutBody(identifier << 16 | channels), labels);
  }
}

TEST_F(StatedLayout, OfChannelDescriptionsCountsForEveryCodec) {
  const Labels labels = {rearSurroundLeft, rearSurroundRight, center, left, right, lfe};
  std::vector<std::uint32_t> numbers;
  for (const ChannelLabel label : labels) numbers.push_back(static_cast<std::uint32_t>(label));
  expectInEveryFile(6, test::layoutBody(ChannelLayoutTags::useChannelDescriptions, 0, numbers),
                    labels);
}

TEST_F(StatedLayout, OfABitmapCountsForEveryCodec) {
  expectInEveryFile(6, test::layoutBody(ChannelLayoutTags::useChannelBitmap, 0x3F),
                    Labels{left, right, center, lfe, leftSurround, rightSurround});
}

/// Discrete channels were taken for 7.1.
TEST_F(StatedLayout, MayBeDiscrete) {
  Labels labels;
  for (std::uint32_t i = 0; i < 8; ++i)
    labels.push_back(static_cast<ChannelLabel>(static_cast<std::uint32_t>(discrete0) + i));
  expectInEveryFile(8, test::layoutBody(ChannelLayoutTags::discreteInOrder | 8), labels);
}

TEST_F(StatedLayout, ThatSaysNothingOfTheseChannelsIsNone) {
  expectInEveryFile(6, test::layoutBody(ChannelLayoutTags::mpeg71C), std::nullopt);
}

/// Files without a layout follow one rule per container.
TEST_F(StatedLayout, ThatIsMissingIsTheSameForEveryCodec) {
  for (const std::uint32_t channels : {1U, 2U, 3U, 4U, 5U, 6U, 8U}) {
    SCOPED_TRACE(channels);
    EXPECT_EQ(labelsOf(files::cafMuLaw(channels, silence(channels), {})),
              labelsOf(files::cafPCM(channels, silence(channels), {})));
    EXPECT_EQ(labelsOf(files::mov(channels, silence(channels), {})),
              labelsOf(files::cafPCM(channels, silence(channels), {})));
    for (const std::optional<std::uint32_t> mask :
         {std::optional<std::uint32_t>{}, std::optional<std::uint32_t>(0),
          std::optional<std::uint32_t>(0x63F), std::optional<std::uint32_t>(0xFF)}) {
      const auto wave = [&](std::uint16_t tag, std::uint16_t bits) {
        return test::waveFile({.tag = tag,
                               .channels = static_cast<std::uint16_t>(channels),
                               .sampleRate = files::kRate,
                               .bits = bits,
                               .mask = mask},
                              Bytes(kFrames * channels * bits / 8));
      };
      const auto expected = labelsOf(wave(1, 16));
      EXPECT_EQ(labelsOf(wave(6, 8)), expected) << "A-law, mask " << mask.value_or(1);
      EXPECT_EQ(labelsOf(wave(7, 8)), expected) << "mu-law, mask " << mask.value_or(1);
    }
  }
}

}  // namespace
}  // namespace orvane
