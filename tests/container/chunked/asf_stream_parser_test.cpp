#include "orvane/container/chunked/asf_stream_parser.h"

#include <gtest/gtest.h>

#include <string_view>

#include "tests/support/byte_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;
using test::Bytes;
using test::ByteWriter;

/// Two objects: one of `foreignSize` bytes that is not audio, then an audio stream's.
Bytes asfStream(std::uint64_t foreignSize = 40) {
  constexpr std::string_view kHeader =
      "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\0\xAA\0\x62\xCE\x6C"sv;
  ByteWriter file;
  file.text("$H").zeros(10).text(kHeader).u64(200).u32(2).u16(0x0201);
  file.zeros(16).u64(foreignSize).zeros(16);
  file.u64(0x11CFA9B7B7DC0791).u64(0x6553200CC000E68E).u64(100).u64(0x11CF5B4DF8699E40);
  return file.zeros(46).u16(0x0161).u16(2).u32(44'100).zeros(50).bytes();
}

class ASFStreamParser : public testing::Test {
 protected:
  std::string failureOf(const Bytes& bytes) {
    return test::openingFailure(folder_.write("a.wav", bytes));
  }

  test::TemporaryDirectory folder_;
};

TEST_F(ASFStreamParser, DescribesTheAudioThatItCannotRead) {
  const auto found = describeAudioFile(folder_.write("a.wav", asfStream()));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->fileTypeID, fourCCFrom("ASFS"));
  EXPECT_EQ(found->dataFormat.formatID, fourCCFrom("wma2"));
  EXPECT_EQ(found->dataFormat.channelsPerFrame, 2U);
  EXPECT_EQ(found->dataFormat.sampleRate, 44'100);
  EXPECT_EQ(failureOf(asfStream()), "ASF network streams can be identified but not read");
}

TEST_F(ASFStreamParser, StopsAtAnObjectOfAnImpossibleSize) {
  for (const std::uint64_t size :
       {std::uint64_t{0}, std::uint64_t{23}, std::uint64_t{4096}, UINT64_MAX})
    EXPECT_EQ(failureOf(asfStream(size)), "The file holds no audio") << size;
}

TEST_F(ASFStreamParser, RefusesAHeaderThatIsCutShort) {
  const Bytes whole = asfStream();
  for (std::size_t size = 28; size < 42 + 40 + 86; ++size)
    EXPECT_NE(failureOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}), "")
        << size;
}

}  // namespace
}  // namespace orvane
