#include "orvane/container/chunked/au_parser.h"

#include <gtest/gtest.h>

#include <string_view>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::auFile;
using test::Bytes;

class AuParser : public testing::Test {
 protected:
  PCMStream parse(const Bytes& bytes) {
    const InputFile file(folder_.write("a.au", bytes));
    return parseAU(file, 0);
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(AuParser, TellsEveryPCMEncodingInBothByteOrders) {
  for (const std::endian order : {std::endian::big, std::endian::little}) {
    const auto sample = [&](std::uint32_t encoding) {
      return parse(auFile(encoding, 48000, 1, Bytes(16), order)).sample;
    };
    const bool isBig = order == std::endian::big;
    EXPECT_EQ(sample(2), SampleEncoding::signedInteger(1));
    EXPECT_EQ(sample(3), SampleEncoding::signedInteger(2, isBig));
    EXPECT_EQ(sample(4), SampleEncoding::signedInteger(3, isBig));
    EXPECT_EQ(sample(5), SampleEncoding::signedInteger(4, isBig));
    EXPECT_EQ(sample(6), SampleEncoding::floatingPoint(4, isBig));
    EXPECT_EQ(sample(7), SampleEncoding::floatingPoint(8, isBig));
  }
}

TEST_F(AuParser, KnowsTheSignaturesOfDECInBothByteOrders) {
  for (const std::endian order : {std::endian::big, std::endian::little}) {
    const Bytes ours = auFile(3, 48000, 1, Bytes(16), order);
    const bool isBig = order == std::endian::big;
    Bytes theirs = ours;
    const std::string_view signature(isBig ? ".sd\0" : "\0ds.", 4);
    for (std::size_t i = 0; i < 4; ++i) theirs[i] = static_cast<std::byte>(signature[i]);
    EXPECT_EQ(parse(theirs), parse(ours));
  }
}

TEST_F(AuParser, NamesTheCodecOfCompressedFiles) {
  const auto code = [&](std::uint32_t encoding) {
    return parse(auFile(encoding, 8000, 1, Bytes(16))).description.dataFormat.formatID;
  };
  EXPECT_EQ(code(1), fourCCFrom("ulaw"));
  EXPECT_EQ(code(27), fourCCFrom("alaw"));
}

TEST_F(AuParser, TakesUnknownSizesToTheEnd) {
  const PCMStream unknown = parse(auFile(3, 48000, 1, Bytes(16), std::endian::big, UINT32_MAX));
  EXPECT_EQ(unknown.frameCount, 8);
  EXPECT_TRUE(unknown.description.warnings.empty());
  const PCMStream zero = parse(auFile(3, 48000, 1, Bytes(16), std::endian::big, 0));
  EXPECT_EQ(zero.frameCount, 8);
  EXPECT_EQ(zero.description.warnings.size(), 1U);
  const PCMStream beyond = parse(auFile(3, 48000, 1, Bytes(16), std::endian::big, 99));
  EXPECT_EQ(beyond.frameCount, 8);
  ASSERT_EQ(beyond.description.warnings.size(), 1U);
  EXPECT_EQ(beyond.description.warnings[0].code, AudioFileWarning::Code::truncatedAudio);
}

TEST_F(AuParser, SkipsTheAnnotation) {
  Bytes bytes = auFile(3, 48000, 1, Bytes(16));
  bytes[7] = std::byte{32};
  EXPECT_EQ(parse(bytes).dataOffset, 32U);
  EXPECT_EQ(parse(bytes).frameCount, 4);
  bytes[4] = std::byte{0xFF};  // far beyond the file
  EXPECT_EQ(parse(bytes).frameCount, 0);
  bytes[4] = bytes[7] = std::byte{0};  // inside the header
  EXPECT_EQ(parse(bytes).dataOffset, 24U);
}

}  // namespace
}  // namespace orvane
