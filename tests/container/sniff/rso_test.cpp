#include <gtest/gtest.h>

#include "orvane/container/sniff/container_sniffer.h"
#include "tests/support/byte_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;

class RSOSniffing : public testing::Test {
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

  static Bytes rso(std::uint64_t rate = 8000) {
    return ByteWriter(std::endian::big).u16(0x0100).u16(90).u16(rate).u16(0).zeros(90).bytes();
  }

  test::TemporaryDirectory folder_;
};

TEST_F(RSOSniffing, KnowsSoundsByTheirSize) {
  expectKnownByItsSize(rso(), "RSO ", {0, 1, 2, 3, 6, 7});
  EXPECT_EQ(codeOf(rso(0)), 0U);
}

TEST_F(RSOSniffing, AHeaderWithoutAudioIsNothing) {
  EXPECT_EQ(codeOf(ByteWriter(std::endian::big).u16(0x0100).u16(0).u16(8000).u16(0).bytes()), 0U);
  EXPECT_EQ(codeOf(Bytes(42)), 0U);
}

}  // namespace
}  // namespace orvane
