#include "orvane/container/chunked/caf_file.h"

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::cafDataBody;
using test::cafDescriptionBody;
using test::cafFile;
using enum ChannelLabel;
using Labels = std::vector<ChannelLabel>;

class CafParser : public testing::Test {
 protected:
  PCMStream parse(const Bytes& bytes) {
    const InputFile file(folder_.write("a.caf", bytes));
    return parseCAF(file, 0);
  }

  std::optional<ChannelLayout> layoutOf(int channels, const Bytes& layoutChunk) {
    return parse(cafFile({{.id = "desc", .body = cafDescriptionBody(48000, channels, {})},
                          {.id = "chan", .body = layoutChunk}}))
        .description.layout;
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(CafParser, TakesLittleEndianFromItsFlag) {
  for (const std::endian order : {std::endian::little, std::endian::big}) {
    const PCMStream stream =
        parse(cafFile({{.id = "desc", .body = cafDescriptionBody(96000, 1, {.order = order})},
                       {.id = "data", .body = cafDataBody(Bytes(6))}}));
    EXPECT_EQ(stream.sample.isBigEndian, order == std::endian::big);
    const bool isBigByFlag =
        (stream.description.dataFormat.formatFlags & kFormatFlagIsBigEndian) != 0;
    EXPECT_EQ(isBigByFlag, order == std::endian::big);
    EXPECT_EQ(stream.frameCount, 3);
    EXPECT_EQ(stream.description.dataFormat.sampleRate, 96000);
    EXPECT_EQ(stream.dataOffset, 8U + 12 + 32 + 12 + 4);
  }
}

TEST_F(CafParser, KnowsWhereTheAudioLiesFromThePacketTable) {
  const auto extentOf = [&](std::uint64_t packets, std::uint64_t frames, std::uint32_t priming) {
    const auto big = [] { return test::ByteWriter(std::endian::big); };
    const Bytes description =
        big().float64(44100).text(".mp3").u32(0).u32(0).u32(1152).u32(2).u32(0).bytes();
    const Bytes table = big().u64(packets).u64(frames).u32(priming).u32(0).bytes();
    return parse(cafFile({{.id = "desc", .body = description}, {.id = "pakt", .body = table}}))
        .extent;
  };
  EXPECT_EQ(extentOf(155, 176400, 1105), (AudioExtent{.priming = 1105, .frames = 176400}));
  // What its packets cannot hold is a lie.
  EXPECT_EQ(extentOf(155, 178560, 1), std::nullopt);
  EXPECT_EQ(extentOf(155, 0, 1105), std::nullopt);
  EXPECT_EQ(extentOf(UINT64_MAX, UINT64_MAX, 0), std::nullopt);
}

TEST_F(CafParser, DoesNotPadOddChunks) {
  const PCMStream stream =
      parse(cafFile({{.id = "desc", .body = cafDescriptionBody(48000, 1, {.bits = 8, .bytes = 1})},
                     {.id = "free", .body = Bytes(5)},
                     {.id = "data", .body = cafDataBody(Bytes(3))},
                     {.id = "info", .body = Bytes(2)}}));
  EXPECT_EQ(stream.frameCount, 3);
  EXPECT_EQ(stream.sample.kind, SampleEncoding::Kind::signedInteger);
  EXPECT_EQ(stream.chunkList.chunks.size(), 4U);
}

TEST_F(CafParser, TakesASizeOfMinusOneToTheEndWithoutComplaint) {
  const PCMStream stream =
      parse(cafFile({{.id = "desc", .body = cafDescriptionBody(48000, 1, {})},
                     {.id = "data", .body = cafDataBody(Bytes(10)), .statedSize = UINT64_MAX}}));
  EXPECT_EQ(stream.frameCount, 5);
  EXPECT_TRUE(stream.description.warnings.empty());
}

TEST_F(CafParser, LeftJustifiesSamplesInWiderContainers) {
  const PCMStream stream =
      parse(cafFile({{.id = "desc", .body = cafDescriptionBody(48000, 2, {.bits = 24, .bytes = 4})},
                     {.id = "data", .body = cafDataBody(Bytes(16))}}));
  EXPECT_EQ(stream.sample.bytes, 4U);
  EXPECT_EQ(stream.description.dataFormat.bitsPerChannel, 24U);
  EXPECT_EQ(stream.frameCount, 2);
}

TEST_F(CafParser, LeavesChannelsBeyondTwoOpenWithoutALayout) {
  const auto layout = [&](int channels) {
    return parse(cafFile({{.id = "desc", .body = cafDescriptionBody(48000, channels, {})}}))
        .description.layout;
  };
  EXPECT_EQ(layout(1)->labels.size(), 1U);
  EXPECT_EQ(layout(2)->labels, (Labels{left, right}));
  EXPECT_FALSE(layout(3));
  EXPECT_FALSE(layout(6));
}

TEST_F(CafParser, ReadsLayoutsByTagBitmapAndDescription) {
  EXPECT_EQ(layoutOf(6, test::layoutBody(0x00790006))->labels,
            (Labels{left, right, center, lfe, leftSurround, rightSurround}));
  EXPECT_EQ(layoutOf(3, test::layoutBody(0x00010000, 0x7))->labels, (Labels{left, right, center}));
  EXPECT_EQ(layoutOf(2, test::layoutBody(0, 0, {2, 1}))->labels, (Labels{right, left}));
}

TEST_F(CafParser, IgnoresALayoutThatDoesNotFitTheChannels) {
  EXPECT_FALSE(layoutOf(5, test::layoutBody(0x00790006)));    // a tag of six
  EXPECT_FALSE(layoutOf(3, test::layoutBody(0, 0, {1, 2})));  // fewer than channels
  EXPECT_EQ(layoutOf(2, test::layoutBody(0, 0, {1, 2, 3}))->labels, (Labels{left, right}));
  EXPECT_FALSE(layoutOf(2, Bytes(11)));  // too short for a layout
  Bytes overstated = test::layoutBody(0, 0, {1, 2});
  overstated[8] = std::byte{0xFF};  // says 4 billion descriptions, holds two
  EXPECT_EQ(layoutOf(2, overstated)->labels, (Labels{left, right}));
  EXPECT_FALSE(layoutOf(3, overstated));
}

TEST_F(CafParser, NamesTheCodecOfCompressedFiles) {
  test::ByteWriter description(std::endian::big);
  description.float64(44100).text("alac").u32(3).u32(0).u32(4096).u32(2).u32(0);
  const PCMStream stream = parse(cafFile({{.id = "desc", .body = description.bytes()}}));
  EXPECT_EQ(stream.description.dataFormat.formatID, fourCCFrom("alac"));
  EXPECT_EQ(stream.description.dataFormat.framesPerPacket, 4096U);
  EXPECT_EQ(stream.description.dataFormat.bitsPerChannel, 0U);
}

}  // namespace
}  // namespace orvane
