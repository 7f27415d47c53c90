// Whose layout counts: where the codec does not order its channels, what the container says does,
// whoever decodes.

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/container/audio_file.h"
#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;
using enum ChannelLabel;
using Labels = std::vector<ChannelLabel>;

constexpr std::uint32_t kFrames = 1000;
constexpr std::uint32_t kRate = 48000;

Bytes box(std::string_view id, const Bytes& body) {
  return ByteWriter(std::endian::big).u32(8 + body.size()).text(id).append(body).bytes();
}

Bytes fullBox(std::string_view id, const Bytes& body) {
  return box(id, ByteWriter().zeros(4).append(body).bytes());
}

ByteWriter big() {
  return ByteWriter(std::endian::big);
}

/// 16-bit PCM in QuickTime's first form of a sound description; `layout` is absent when empty.
Bytes movFile(std::uint32_t channels, const Bytes& layout) {
  const Bytes type = box("ftyp", big().text("qt  ").u32(0x200).text("qt  ").bytes());
  const std::uint32_t frameBytes = 2 * channels;
  const Bytes data = box("mdat", Bytes(std::size_t{kFrames} * frameBytes));
  auto description = big().zeros(6).u16(1).u16(1).zeros(6).u16(channels).u16(16).zeros(4);
  description.u32(kRate << 16).u32(1).u32(2).u32(frameBytes).u32(2);
  if (!layout.empty()) description.append(fullBox("chan", layout));
  const Bytes table =
      ByteWriter()
          .append(fullBox("stsd", big().u32(1).append(box("twos", description.bytes())).bytes()))
          .append(fullBox("stts", big().u32(1).u32(kFrames).u32(1).bytes()))
          .append(fullBox("stsc", big().u32(1).u32(1).u32(kFrames).u32(1).bytes()))
          .append(fullBox("stsz", big().u32(1).u32(kFrames).bytes()))
          .append(fullBox("stco", big().u32(1).u32(type.size() + 8).bytes()))
          .bytes();
  const Bytes timing = big().zeros(8).u32(kRate).u32(kFrames).zeros(4).bytes();
  const Bytes handler = fullBox("hdlr", big().text("mhlrsoun").zeros(13).bytes());
  const Bytes media =
      ByteWriter()
          .append(fullBox("mdhd", timing))
          .append(handler)
          .append(box(
              "minf",
              ByteWriter().append(fullBox("smhd", Bytes(4))).append(box("stbl", table)).bytes()))
          .bytes();
  const Bytes header =
      fullBox("tkhd", big().zeros(8).u32(1).zeros(4).u32(kFrames).zeros(60).bytes());
  const Bytes track = ByteWriter().append(header).append(box("mdia", media)).bytes();
  const Bytes movie = ByteWriter()
                          .append(fullBox("mvhd", ByteWriter().append(timing).zeros(76).bytes()))
                          .append(box("trak", track))
                          .bytes();
  return ByteWriter().append(type).append(data).append(box("moov", movie)).bytes();
}

Bytes cafMuLawFile(std::uint32_t channels, const Bytes& layout) {
  const Bytes description =
      big().float64(kRate).text("ulaw").u32(0).u32(channels).u32(1).u32(channels).u32(8).bytes();
  std::vector<test::RawChunk> chunks{{.id = "desc", .body = description}};
  if (!layout.empty()) chunks.push_back({.id = "chan", .body = layout});
  chunks.push_back({.id = "data", .body = test::cafDataBody(Bytes(kFrames * channels))});
  return test::cafFile(chunks);
}

Bytes cafPCMFile(std::uint32_t channels, const Bytes& layout) {
  std::vector<test::RawChunk> chunks{
      {.id = "desc", .body = test::cafDescriptionBody(kRate, static_cast<int>(channels), {})}};
  if (!layout.empty()) chunks.push_back({.id = "chan", .body = layout});
  chunks.push_back({.id = "data", .body = test::cafDataBody(Bytes(2 * kFrames * channels))});
  return test::cafFile(chunks);
}

Bytes aiffMuLawFile(std::uint32_t channels, const Bytes& layout) {
  std::vector<test::RawChunk> chunks{
      {.id = "COMM",
       .body = test::commonBody(static_cast<int>(channels), kFrames, 16, kRate, "ulaw")}};
  if (!layout.empty()) chunks.push_back({.id = "CHAN", .body = layout});
  chunks.push_back({.id = "SSND", .body = test::soundBody(Bytes(kFrames * channels))});
  return test::formFile("FORM", "AIFC", chunks);
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
    EXPECT_EQ(labelsOf(cafPCMFile(channels, layout)), labels) << "PCM in CAF";
    EXPECT_EQ(labelsOf(cafMuLawFile(channels, layout)), labels) << "mu-law in CAF";
    EXPECT_EQ(labelsOf(aiffMuLawFile(channels, layout)), labels) << "mu-law in AIFF-C";
    EXPECT_EQ(labelsOf(movFile(channels, layout)), labels) << "PCM in MOV";
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
    EXPECT_EQ(labelsOf(cafMuLawFile(channels, {})), labelsOf(cafPCMFile(channels, {})));
    EXPECT_EQ(labelsOf(movFile(channels, {})), labelsOf(cafPCMFile(channels, {})));
    for (const std::optional<std::uint32_t> mask :
         {std::optional<std::uint32_t>{}, std::optional<std::uint32_t>(0),
          std::optional<std::uint32_t>(0x63F), std::optional<std::uint32_t>(0xFF)}) {
      const auto wave = [&](std::uint16_t tag, std::uint16_t bits) {
        return test::waveFile({.tag = tag,
                               .channels = static_cast<std::uint16_t>(channels),
                               .sampleRate = kRate,
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
