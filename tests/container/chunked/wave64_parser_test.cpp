#include "orvane/container/chunked/wave_file.h"

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;

class Wave64Parser : public testing::Test {
 protected:
  PCMStream parse(const Bytes& bytes) {
    const InputFile file(folder_.write("a.w64", bytes));
    return parseWave64(file, 0);
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(Wave64Parser, ReadsFormatAndPlaceOfTheAudio) {
  const PCMStream stream = parse(
      test::wave64File({{.id = "fmt ", .body = test::waveFormatBody({.channels = 1, .bits = 24})},
                        {.id = "junk", .body = Bytes(3)},
                        {.id = "data", .body = Bytes(9)},
                        {.id = "levl", .body = Bytes(5)}}));
  EXPECT_EQ(stream.description.fileTypeID, fourCCFrom("W64f"));
  EXPECT_EQ(stream.frameCount, 3);
  EXPECT_EQ(stream.description.dataFormat.bitsPerChannel, 24U);
  ASSERT_EQ(stream.chunkList.chunks.size(), 4U);
  // Each chunk begins on a boundary of eight bytes.
  for (const Chunk& chunk : stream.chunkList.chunks) EXPECT_EQ(chunk.headerOffset % 8, 0U);
  EXPECT_EQ(stream.dataOffset, 40U + 40 + 32 + 24);
}

TEST_F(Wave64Parser, TakesOpenSizesToTheEnd) {
  for (const std::uint64_t size : {std::uint64_t{0}, UINT64_MAX}) {
    const PCMStream stream =
        parse(test::wave64File({{.id = "fmt ", .body = test::waveFormatBody({})},
                                {.id = "data", .body = Bytes(16), .statedSize = size}}));
    EXPECT_EQ(stream.frameCount, 4);
    ASSERT_EQ(stream.description.warnings.size(), 1U);
    EXPECT_EQ(stream.description.warnings[0].code, AudioFileWarning::Code::openDataSize);
  }
}

TEST_F(Wave64Parser, CountsTheHeaderInTheSize) {
  const PCMStream stream = parse(test::wave64File(
      {{.id = "fmt ", .body = test::waveFormatBody({})}, {.id = "data", .statedSize = 24}}));
  EXPECT_EQ(stream.frameCount, 0);
  EXPECT_TRUE(stream.description.warnings.empty());
}

}  // namespace
}  // namespace orvane
