#include "orvane/container/chunked/iso_track.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>
#include <vector>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;

ByteWriter big() {
  return ByteWriter(std::endian::big);
}

Bytes box(std::string_view id, std::initializer_list<Bytes> parts) {
  ByteWriter body;
  for (const Bytes& part : parts) body.append(part);
  return big().u32(8 + body.size()).text(id).append(body.bytes()).bytes();
}

struct Edit {
  std::uint64_t length;
  std::int64_t start;
};

/// The headers of a track and what they say.
struct Movie {
  std::uint32_t movieTimescale = 1000;
  std::uint32_t timescale = 44100;
  std::uint64_t mediaDuration = 178176;
  std::vector<Edit> edits{};
  bool isLong = false;  ///< version 1 of every header
  std::uint32_t trackID = 1;

  Bytes timing(std::uint32_t unit, std::uint64_t duration) const {
    return isLong ? big().u32(1U << 24).zeros(16).u32(unit).u64(duration).zeros(4).bytes()
                  : big().zeros(12).u32(unit).u32(duration).zeros(4).bytes();
  }
  Bytes editList() const {
    auto list = big().u32(isLong ? 1U << 24 : 0).u32(edits.size());
    for (const auto& [length, start] : edits) {
      const std::size_t bytes = isLong ? 8 : 4;
      list.number(length, bytes).number(static_cast<std::uint64_t>(start), bytes).u32(1 << 16);
    }
    return list.bytes();
  }
  Bytes bytes() const {
    const Bytes number = isLong ? big().u32(1U << 24).zeros(16).u32(trackID).bytes()
                                : big().zeros(12).u32(trackID).bytes();
    return box("moov",
               {box("mvhd", {timing(movieTimescale, 0)}), box("trak", {box("tkhd", {Bytes(16)})}),
                box("trak", {box("tkhd", {number}), box("edts", {box("elst", {editList()})}),
                             box("mdia", {box("mdhd", {timing(timescale, mediaDuration)})})})});
  }
};

class ISOTrackTest : public testing::Test {
 protected:
  std::optional<ISOTrack> read(const Bytes& bytes, std::uint32_t trackID = 1) {
    return readISOTrack(InputFile(folder_.write("a.mp4", bytes)), trackID, 2);
  }
  std::optional<std::int64_t> durationOf(const Movie& movie) {
    const auto track = read(movie.bytes());
    return track ? track->duration : std::nullopt;
  }

  test::TemporaryDirectory folder_;
};

TEST_F(ISOTrackTest, IsAsLongAsItsEditsAre) {
  EXPECT_EQ(durationOf({.edits = {{4000, 1024}}}), 176400);
  EXPECT_EQ(durationOf({.edits = {{4000, 1024}}, .isLong = true}), 176400);
  EXPECT_EQ(durationOf({.edits = {{500, 1024}, {250, 100'000}}}), 22050 + 11025);
  // Silence before the first one.
  EXPECT_EQ(durationOf({.edits = {{300, -1}, {4000, 1024}}}), 176400);
}

/// 1235 ms are 54463.5 frames; the media end after 54441.
TEST_F(ISOTrackTest, IsNotRoundedToTheUnitOfItsEdits) {
  EXPECT_EQ(durationOf({.mediaDuration = 1024 + 54441, .edits = {{1235, 1024}}}), 54441);
  EXPECT_EQ(durationOf({.mediaDuration = 1024 + 54441, .edits = {{1234, 1024}}}), 54441);
  EXPECT_EQ(durationOf({.mediaDuration = 1024 + 54441, .edits = {{1230, 1024}}}), 54243);
}

TEST_F(ISOTrackTest, HasNoLengthThatNobodyStates) {
  EXPECT_EQ(durationOf({}), std::nullopt);
  EXPECT_EQ(durationOf({.mediaDuration = 0, .edits = {{4000, 0}}}), std::nullopt);
  EXPECT_EQ(durationOf({.mediaDuration = 0xFFFFFFFF, .edits = {{4000, 0}}}), std::nullopt);
  EXPECT_EQ(durationOf({.movieTimescale = 0, .edits = {{4000, 0}}}), std::nullopt);
  EXPECT_EQ(durationOf({.edits = {{4000, 200'000}}}), std::nullopt);
  EXPECT_EQ(durationOf({.edits = {{0, 1024}}}), 177152);  // to the end
}

TEST_F(ISOTrackTest, IsFoundByItsNumber) {
  const Movie movie{.edits = {{1000, 0}}, .trackID = 7};
  EXPECT_FALSE(read(movie.bytes(), 1));
  ASSERT_TRUE(read(movie.bytes(), 7));
  EXPECT_EQ(read(movie.bytes(), 7)->timescale, 44100U);
}

TEST_F(ISOTrackTest, MayBeCutOrDamagedAnywhere) {
  const Bytes whole = Movie{.edits = {{1000, 0}}}.bytes();
  for (std::size_t size = 1; size < whole.size(); ++size)
    EXPECT_NO_THROW(read({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}));
  for (std::size_t at = 0; at < whole.size(); ++at)
    for (const std::byte value : {std::byte{0}, std::byte{0x7F}, std::byte{0xFF}}) {
      Bytes bytes = whole;
      bytes[at] = value;
      EXPECT_NO_THROW(read(bytes));
    }
}

}  // namespace
}  // namespace orvane
