#include "orvane/container/sniff/size_sniffer.h"

#include <gtest/gtest.h>

#include "orvane/container/sniff/container_sniffer.h"
#include "tests/support/byte_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;

class SizeSniffer : public testing::Test {
 protected:
  FourCC codeOf(const Bytes& bytes) {
    const InputFile file(folder_.write("file", bytes));
    return sniffContainer(file).fileTypeID;
  }

  /// The header must be that of a whole file; one byte more or less, or of the first `fixed` ones
  /// another, and it is nothing.
  void expectKnownByItsSize(const Bytes& bytes, const char* code,
                            const std::vector<std::size_t>& fixed) {
    SCOPED_TRACE(code);
    EXPECT_EQ(codeOf(bytes), fourCCFrom(code));
    EXPECT_EQ(codeOf({bytes.begin(), bytes.end() - 1}), 0U);
    EXPECT_EQ(codeOf(ByteWriter().append(bytes).u8(0).bytes()), 0U);
    for (const std::size_t at : fixed) {
      Bytes other = bytes;
      other[at] ^= std::byte{0x82};
      EXPECT_EQ(codeOf(other), 0U) << at;
    }
    for (std::size_t size = 1; size < 130 && size < bytes.size(); size += 3)
      EXPECT_EQ(codeOf({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)}), 0U);
  }

  static Bytes htk(std::uint64_t period = 625) {
    return ByteWriter(std::endian::big).u32(100).u32(period).u16(2).u16(0).zeros(200).bytes();
  }

  static Bytes mpc(std::uint64_t stereo, std::uint64_t frames = 50) {
    return ByteWriter()
        .u8(1)
        .u8(4)
        .text("A name of 16 char")
        .u8(100)
        .u8(0)
        .u8(stereo)
        .u32(0)
        .u32(frames)
        .u32(frames)
        .u32(frames)
        .u8(0)
        .u8(1)
        .u16(44'100)
        .zeros(100)
        .bytes();
  }

  static Bytes dvms() {
    ByteWriter header;
    header.text("message").zeros(7).u16(1).u16(2).u32(3).u16(4).u16(5).u32(300).u16(320);
    header.zeros(118 - header.size());
    std::uint64_t sum = 0;
    for (const std::byte b : header.bytes()) sum += std::to_integer<std::uint64_t>(b);
    return header.u16(sum).zeros(300).bytes();
  }

  static Bytes rso(std::uint64_t rate = 8000) {
    return ByteWriter(std::endian::big).u16(0x0100).u16(90).u16(rate).u16(0).zeros(90).bytes();
  }

  test::TemporaryDirectory folder_;
};

TEST_F(SizeSniffer, KnowsHTKWaveforms) {
  expectKnownByItsSize(htk(), "HTK ", {0, 3, 4, 8, 9, 10, 11});
  EXPECT_EQ(codeOf(htk(0)), 0U);
  EXPECT_EQ(codeOf(htk(100'001)), 0U);
}

TEST_F(SizeSniffer, KnowsMPC2000Samples) {
  expectKnownByItsSize(mpc(0), "MPC2", {0, 1, 2, 18, 21, 30, 33});
  expectKnownByItsSize(mpc(1, 25), "MPC2", {0, 1, 2, 18, 21, 30, 33});
}

TEST_F(SizeSniffer, KnowsDVMSMessagesByTheirSum) {
  expectKnownByItsSize(dvms(), "DVMS", {0, 10, 26, 29, 60, 118, 119});
}

TEST_F(SizeSniffer, KnowsRSOSounds) {
  expectKnownByItsSize(rso(), "RSO ", {0, 1, 2, 3, 6, 7});
  EXPECT_EQ(codeOf(rso(0)), 0U);
}

TEST_F(SizeSniffer, HeadersWithoutAnyAudioAreNothing) {
  EXPECT_EQ(codeOf(ByteWriter(std::endian::big).u32(0).u32(625).u16(2).u16(0).bytes()), 0U);
  EXPECT_EQ(codeOf(ByteWriter(std::endian::big).u16(0x0100).u16(0).u16(8000).u16(0).bytes()), 0U);
  EXPECT_EQ(codeOf(Bytes(42)), 0U);
  EXPECT_EQ(codeOf(Bytes(120)), 0U);  // a sum of 0 and a length of 0
}

}  // namespace
}  // namespace orvane
