// Streams without a container are known by a chain of frames, never by one sync word.

#include <gtest/gtest.h>

#include <utility>

#include "orvane/container/sniff/container_sniffer.h"
#include "tests/support/byte_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;

class FrameSync : public testing::Test {
 protected:
  FourCC codeOf(const Bytes& bytes) {
    const InputFile file(folder_.write("file", bytes));
    return sniffContainer(file).fileTypeID;
  }

  /// `count` copies of a frame of `length` bytes that begins with `header`.
  static Bytes frames(const Bytes& header, std::size_t length, int count) {
    ByteWriter writer;
    for (int i = 0; i < count; ++i) writer.append(header).zeros(length - header.size());
    return writer.bytes();
  }

  static Bytes header(std::initializer_list<int> bytes) {
    Bytes result;
    for (const int byte : bytes) result.push_back(static_cast<std::byte>(byte));
    return result;
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(FrameSync, TellsTheLayersOfMPEGAudio) {
  // 128 kbit/s at 44.1 kHz: 417 bytes; 48 kHz: 384 bytes.
  EXPECT_EQ(codeOf(frames(header({0xFF, 0xFB, 0x90, 0x64}), 417, 3)), fourCCFrom("MPG3"));
  EXPECT_EQ(codeOf(frames(header({0xFF, 0xFD, 0x84, 0x04}), 384, 3)), fourCCFrom("MPG2"));
  EXPECT_EQ(codeOf(frames(header({0xFF, 0xFF, 0x44, 0x04}), 128, 3)), fourCCFrom("MPG1"));
  // MPEG-2 at 22.05 kHz and MPEG-2.5 at 11.025 kHz, 64 kbit/s.
  EXPECT_EQ(codeOf(frames(header({0xFF, 0xF3, 0x80, 0x64}), 208, 3)), fourCCFrom("MPG3"));
  EXPECT_EQ(codeOf(frames(header({0xFF, 0xE3, 0x80, 0x64}), 417, 3)), fourCCFrom("MPG3"));
}

TEST_F(FrameSync, KnowsADTSByItsLayerBits) {
  EXPECT_EQ(codeOf(frames(header({0xFF, 0xF1, 0x50, 0x80, 0x0C, 0x9F, 0xFC}), 100, 3)),
            fourCCFrom("adts"));
}

TEST_F(FrameSync, KnowsLOAS) {
  EXPECT_EQ(codeOf(frames(header({0x56, 0xE0, 0x64}), 103, 3)), fourCCFrom("loas"));
}

TEST_F(FrameSync, KnowsDTSInBothByteOrders) {
  const Bytes dts = header({0x7F, 0xFE, 0x80, 0x01, 0xFC, 0x3C, 0x75, 0xB0});
  const Bytes swapped = header({0xFE, 0x7F, 0x01, 0x80, 0x3C, 0xFC, 0xB0, 0x75});
  for (const Bytes& head : {dts, swapped}) {
    const Bytes stream = frames(head, 1884, 6);
    EXPECT_EQ(codeOf(stream), fourCCFrom("DTS "));
    // Cut from a running stream in the middle of a frame.
    EXPECT_EQ(codeOf({stream.begin() + 100, stream.end()}), fourCCFrom("DTS "));
    EXPECT_EQ(codeOf({stream.begin() + 100, stream.begin() + 4 * 1884}), 0U);  // too few frames
    EXPECT_EQ(codeOf(ByteWriter().zeros(100).append(stream).zeros(9).bytes()), 0U);
  }
}

TEST_F(FrameSync, KnowsSBCByFramesWithoutGap) {
  // 16 blocks of 8 bands, mono, bit pool 17; the same in joint stereo, bit pool 53.
  EXPECT_EQ(codeOf(frames(header({0x9C, 0xF1, 0x11}), 42, 4)), fourCCFrom("SBC "));
  EXPECT_EQ(codeOf(frames(header({0x9C, 0xFD, 0x35}), 119, 4)), fourCCFrom("SBC "));
  EXPECT_EQ(codeOf(frames(header({0x9C, 0xF1, 0x11}), 42, 3)), 0U);
  EXPECT_EQ(codeOf(frames(header({0x9C, 0xF1, 0x11}), 43, 40)), 0U);
  EXPECT_EQ(codeOf(frames(header({0x9C, 0xF1, 0xFF}), 518, 40)), 0U);  // more bits than there are
}

TEST_F(FrameSync, TellsAC3FromItsSuccessorInBothByteOrders) {
  // 192 kbit/s at 48 kHz: 768 bytes; at 44.1 kHz the odd codes are one word longer.
  EXPECT_EQ(codeOf(frames(header({0x0B, 0x77, 0, 0, 0x14, 0x40}), 768, 3)), fourCCFrom("ac-3"));
  EXPECT_EQ(codeOf(frames(header({0x77, 0x0B, 0, 0, 0x40, 0x14}), 768, 3)), fourCCFrom("ac-3"));
  EXPECT_EQ(codeOf(frames(header({0x0B, 0x77, 0, 0, 0x54, 0x40}), 834, 3)), fourCCFrom("ac-3"));
  EXPECT_EQ(codeOf(frames(header({0x0B, 0x77, 0, 0, 0x55, 0x40}), 836, 3)), fourCCFrom("ac-3"));
  EXPECT_EQ(codeOf(frames(header({0x0B, 0x77, 0x01, 0xFF, 0x3F, 0x80}), 1024, 3)),
            fourCCFrom("ec-3"));
}

TEST_F(FrameSync, FewFramesCountWhereTheyFillTheFile) {
  const Bytes mp3 = frames(header({0xFF, 0xFB, 0x90, 0x64}), 417, 1);
  EXPECT_EQ(codeOf(mp3), fourCCFrom("MPG3"));
  EXPECT_EQ(codeOf(ByteWriter().append(mp3).text("TAG").zeros(125).bytes()), fourCCFrom("MPG3"));
  EXPECT_EQ(codeOf(ByteWriter().append(mp3).zeros(500).bytes()), 0U);
}

TEST_F(FrameSync, ALastFrameMayBeCutShort) {
  Bytes mp3 = frames(header({0xFF, 0xFB, 0x90, 0x64}), 417, 2);
  mp3.resize(600);
  EXPECT_EQ(codeOf(mp3), fourCCFrom("MPG3"));
}

TEST_F(FrameSync, StreamsMayFollowJunk) {
  const Bytes mp3 = frames(header({0xFF, 0xFB, 0x90, 0x64}), 417, 5);
  const Bytes adts = frames(header({0xFF, 0xF1, 0x50, 0x80, 0x0C, 0x9F, 0xFC}), 100, 5);
  const Bytes ac3 = frames(header({0x0B, 0x77, 0, 0, 0x14, 0x40}), 768, 5);
  const Bytes loas = frames(header({0x56, 0xE0, 0x64}), 103, 5);
  for (const auto& [stream, code] :
       {std::pair{mp3, "MPG3"}, {adts, "adts"}, {ac3, "ac-3"}, {loas, "loas"}}) {
    EXPECT_EQ(codeOf(ByteWriter().zeros(1000).append(stream).bytes()), fourCCFrom(code));
    EXPECT_EQ(codeOf(ByteWriter().zeros(1000).append(stream).text("TAG").zeros(125).bytes()),
              fourCCFrom(code));
    EXPECT_EQ(codeOf(ByteWriter().zeros(20'000).append(stream).bytes()), 0U);
  }
}

/// Jump tables of programs look like a few frames; streams go on.
TEST_F(FrameSync, ChainsThatBreakOffAreNoStreamBehindJunk) {
  const Bytes chain = frames(header({0xFF, 0xFF, 0x25, 0xC2, 0x6F}), 64, 40);
  EXPECT_EQ(codeOf(ByteWriter().zeros(1000).append(chain).bytes()), fourCCFrom("MPG1"));
  EXPECT_EQ(codeOf(ByteWriter().zeros(1000).append(chain).zeros(5000).bytes()), 0U);
}

TEST_F(FrameSync, HeadersThatCannotBeAreNoSync) {
  for (const Bytes& wrong :
       {header({0xFF, 0xEB, 0x90, 0x64}),  // reserved version
        header({0xFF, 0xFB, 0xF0, 0x64}),  // bad bit rate
        header({0xFF, 0xFB, 0x00, 0x64}),  // free bit rate
        header({0xFF, 0xFB, 0x9C, 0x64}),  // reserved frequency
        header({0x0B, 0x77, 0, 0, 0xD4, 0x40}), header({0x0B, 0x77, 0, 0, 0x3F, 0x40}),
        header({0xFF, 0xF1, 0x7C, 0x80, 0x0C, 0x9F, 0xFC})})
    EXPECT_EQ(codeOf(frames(wrong, 417, 10)), 0U);
}

TEST_F(FrameSync, ChangingStreamsAreNoChain) {
  const Bytes first = frames(header({0xFF, 0xFB, 0x90, 0x64}), 417, 1);
  const Bytes other = frames(header({0xFF, 0xFD, 0x84, 0x04}), 384, 1);
  EXPECT_EQ(codeOf(ByteWriter().append(first).append(other).append(first).bytes()), 0U);
}

}  // namespace
}  // namespace orvane
