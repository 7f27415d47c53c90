#include "orvane/container/chunked/chunk_reader.h"

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;

constexpr FourCC kData = fourCCFrom("data");

class ChunkReader : public testing::Test {
 protected:
  ChunkList read(const Bytes& bytes, const ChunkGrammar& grammar, std::uint64_t start = 0) {
    const InputFile file(folder_.write("chunks", bytes));
    return readChunks(file, 0, start, grammar);
  }

  static Bytes chunk(std::string_view id, std::uint32_t size, std::size_t bodyBytes) {
    return ByteWriter().text(id).u32(size).zeros(bodyBytes).bytes();
  }

  const ChunkGrammar riff_{.audioID = kData};

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(ChunkReader, ListsEveryChunkWithItsPlace) {
  const Bytes bytes =
      ByteWriter().append(chunk("fmt ", 16, 16)).append(chunk("data", 6, 6)).bytes();
  const ChunkList list = read(bytes, riff_);
  EXPECT_EQ(list.chunks,
            (std::vector<Chunk>{
                {.id = fourCCFrom("fmt "), .headerOffset = 0, .bodyOffset = 8, .size = 16},
                {.id = kData, .headerOffset = 24, .bodyOffset = 32, .size = 6}}));
  EXPECT_FALSE(list.hasMissingPad);
}

TEST_F(ChunkReader, SkipsThePadOfOddChunks) {
  const Bytes bytes = ByteWriter().append(chunk("odd ", 3, 4)).append(chunk("data", 2, 2)).bytes();
  const ChunkList list = read(bytes, riff_);
  ASSERT_EQ(list.chunks.size(), 2U);
  EXPECT_EQ(list.chunks[1].headerOffset, 12U);
  EXPECT_FALSE(list.hasMissingPad);
}

TEST_F(ChunkReader, NoticesAMissingPad) {
  const Bytes bytes = ByteWriter().append(chunk("odd ", 3, 3)).append(chunk("data", 2, 2)).bytes();
  const ChunkList list = read(bytes, riff_);
  ASSERT_EQ(list.chunks.size(), 2U);
  EXPECT_EQ(list.chunks[1].headerOffset, 11U);
  EXPECT_EQ(list.chunks[1].id, kData);
  EXPECT_TRUE(list.hasMissingPad);
}

TEST_F(ChunkReader, EndsAtAChunkThatRunsBeyondTheFile) {
  const Bytes bytes = ByteWriter().append(chunk("LIST", 100, 10)).bytes();
  const ChunkList list = read(bytes, riff_);
  ASSERT_EQ(list.chunks.size(), 1U);
  EXPECT_EQ(list.chunks[0].size, 10U);
  EXPECT_EQ(list.chunks[0].extent, Chunk::Extent::cutShort);
}

TEST_F(ChunkReader, EndsAtAHeaderThatIsCutShort) {
  const Bytes bytes = ByteWriter().append(chunk("JUNK", 2, 2)).text("dat").bytes();
  EXPECT_EQ(read(bytes, riff_).chunks.size(), 1U);
  EXPECT_TRUE(read(bytes, riff_, bytes.size()).chunks.empty());
  EXPECT_TRUE(read(bytes, riff_, UINT64_MAX).chunks.empty());
}

TEST_F(ChunkReader, TakesAnAudioSizeOfZeroForOpenOnlyWhereNoChunkFollows) {
  const Bytes followed =
      ByteWriter().append(chunk("data", 0, 0)).append(chunk("LIST", 2, 2)).bytes();
  const ChunkList list = read(followed, riff_);
  ASSERT_EQ(list.chunks.size(), 2U);
  EXPECT_EQ(list.chunks[0].size, 0U);
  EXPECT_EQ(list.chunks[0].extent, Chunk::Extent::exact);

  const ChunkList open = read(chunk("data", 0, 50), riff_);
  ASSERT_EQ(open.chunks.size(), 1U);
  EXPECT_EQ(open.chunks[0].size, 50U);
  EXPECT_EQ(open.chunks[0].extent, Chunk::Extent::open);

  EXPECT_EQ(read(chunk("data", 0, 0), riff_).chunks[0].extent, Chunk::Extent::exact);
}

TEST_F(ChunkReader, TakesAllOnesAndPipeSizesForOpen) {
  for (const std::uint32_t size : {0xFFFFFFFFU, 0x7FFFFFFFU, 0x7FFFF000U, 0x7FFFFFFEU}) {
    const ChunkList list = read(chunk("data", size, 9), riff_);
    ASSERT_EQ(list.chunks.size(), 1U);
    EXPECT_EQ(list.chunks[0].size, 9U);
    EXPECT_EQ(list.chunks[0].extent, Chunk::Extent::open) << size;
  }
  EXPECT_EQ(read(chunk("data", 0x80000000U, 9), riff_).chunks[0].extent, Chunk::Extent::cutShort);
}

TEST_F(ChunkReader, TakesLongSizesOnlyForSizesOfAllOnes) {
  ChunkGrammar grammar = riff_;
  grammar.longSizes = {{kData, 4}, {fourCCFrom("axml"), 2}};
  const Bytes bytes = ByteWriter()
                          .append(chunk("data", 0xFFFFFFFF, 4))
                          .append(chunk("axml", 0xFFFFFFFF, 2))
                          .append(chunk("data", 6, 6))
                          .bytes();
  const ChunkList list = read(bytes, grammar);
  ASSERT_EQ(list.chunks.size(), 3U);
  EXPECT_EQ(list.chunks[0].size, 4U);
  EXPECT_EQ(list.chunks[1].size, 2U);
  EXPECT_EQ(list.chunks[2].size, 6U);
}

TEST_F(ChunkReader, BoundsTheWorkOnEndlessChains) {
  ByteWriter writer;
  for (std::size_t i = 0; i < kMaximumChunks + 100; ++i) writer.text("JUNK").u32(0);
  EXPECT_EQ(read(writer.bytes(), riff_).chunks.size(), kMaximumChunks);
}

TEST_F(ChunkReader, EndsAtNegativeAndImpossibleLongSizes) {
  const ChunkGrammar caf{
      .header = ChunkGrammar::Header::caf, .byteOrder = std::endian::big, .audioID = kData};
  const Bytes negative =
      ByteWriter(std::endian::big).text("free").u64(1ULL << 63).zeros(40).bytes();
  EXPECT_TRUE(read(negative, caf).chunks.empty());
  const Bytes huge = ByteWriter(std::endian::big).text("free").u64(INT64_MAX).zeros(40).bytes();
  ASSERT_EQ(read(huge, caf).chunks.size(), 1U);
  EXPECT_EQ(read(huge, caf).chunks[0].size, 40U);

  const ChunkGrammar wave64{.header = ChunkGrammar::Header::wave64, .audioID = kData};
  for (const std::uint64_t size : {0ULL, 1ULL, 23ULL}) {
    const Bytes bytes = ByteWriter().text("junk").zeros(12).u64(size).zeros(40).bytes();
    EXPECT_TRUE(read(bytes, wave64).chunks.empty()) << size;
  }
}

TEST_F(ChunkReader, KnowsWave64ChunksByTheirWholeIdentifier) {
  const ChunkGrammar wave64{.header = ChunkGrammar::Header::wave64, .audioID = kData};
  const Bytes foreign = ByteWriter().text("data").zeros(12).u64(24 + 3).zeros(8).bytes();
  ASSERT_EQ(read(foreign, wave64).chunks.size(), 1U);
  EXPECT_EQ(read(foreign, wave64).chunks[0].id, 0U);
}

}  // namespace
}  // namespace orvane
