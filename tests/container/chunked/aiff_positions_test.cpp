#include "orvane/container/chunked/aiff_positions.h"

#include <gtest/gtest.h>

#include "tests/container/chunked/followed_file.h"

namespace orvane {
namespace {

namespace Edits = test::Edits;

using test::Bytes;
using test::ByteWriter;
using test::FollowedChunk;
using test::FollowedFile;
using test::markedAIFF;

using AIFFPositionsTest = test::FollowedFileTest;

struct Marker {
  std::uint16_t id = 0;
  std::uint32_t frame = 0;
  std::string name{};
};

Bytes marks(const std::vector<Marker>& markers) {
  ByteWriter writer(std::endian::big);
  writer.u16(markers.size());
  for (const auto& [id, frame, name] : markers)
    writer.u16(id).u32(frame).u8(name.size()).text(name).zeros((name.size() + 1) % 2);
  return writer.bytes();
}

Bytes instrument(std::uint16_t sustaining, std::uint16_t releasing) {
  ByteWriter writer(std::endian::big);
  writer.text("keys+gn!").u16(sustaining).u16(1).u16(2).u16(releasing).u16(3).u16(4);
  return writer.bytes();
}

Bytes comments(const std::vector<std::pair<std::uint16_t, std::string>>& entries) {
  ByteWriter writer(std::endian::big);
  writer.u16(entries.size());
  for (const auto& [marker, text] : entries)
    writer.u32(99).u16(marker).u16(text.size()).text(text).zeros(text.size() % 2);
  return writer.bytes();
}

TEST_F(AIFFPositionsTest, FollowTheEdit) {
  const Bytes before = marks({{1, 5, "in"}, {2, 30, "odd"}, {3, 60, ""}, {4, 100, "end"}});
  const auto after = [&](const FrameFollower& frames) {
    return followed(markedAIFF({{"MARK", before}}), frames);
  };
  EXPECT_EQ(after(Edits::headTrimmed(10)),
            (FollowedFile{{{"MARK", marks({{2, 20, "odd"}, {3, 50, ""}, {4, 90, "end"}})}},
                          {"1 marker lay in removed audio and is gone: in"}}));
  EXPECT_EQ(after(Edits::tailTrimmed(50)),
            (FollowedFile{{{"MARK", marks({{1, 5, "in"}, {2, 30, "odd"}, {4, 50, "end"}})}},
                          {"1 marker lay in removed audio and is gone: at 0.060 s"}}));
  EXPECT_EQ(
      after(Edits::cut(30, 40)).chunks,
      (std::vector<FollowedChunk>{{"MARK", marks({{1, 5, "in"}, {3, 50, ""}, {4, 90, "end"}})}}));
  EXPECT_EQ(after(Edits::inserted(20, 7)).chunks,
            (std::vector<FollowedChunk>{
                {"MARK", marks({{1, 5, "in"}, {2, 37, "odd"}, {3, 67, ""}, {4, 107, "end"}})}}));
  EXPECT_EQ(after(Edits::none()).chunks, (std::vector<FollowedChunk>{{"MARK", before}}));
  EXPECT_EQ(followed(markedAIFF({{"MARK", marks({{1, 5, "in"}})}}), Edits::headTrimmed(10)).chunks,
            std::vector<FollowedChunk>{});
}

TEST_F(AIFFPositionsTest, SwitchLoopsOffAndLetCommentsGo) {
  const Bytes before = marks({{1, 5, "a"}, {2, 30, "b"}, {3, 40, "c"}, {4, 50, "d"}});
  const Bytes text = comments({{1, "of a"}, {0, "odd"}, {3, "of c."}});
  EXPECT_EQ(followed(markedAIFF({{"INST", instrument(1, 2)}, {"COMT", text}, {"MARK", before}}),
                     Edits::headTrimmed(10)),
            (FollowedFile{{{"INST", instrument(0, 2)},
                           {"COMT", comments({{0, "of a"}, {0, "odd"}, {3, "of c."}})},
                           {"MARK", marks({{2, 20, "b"}, {3, 30, "c"}, {4, 40, "d"}})}},
                          {"1 marker lay in removed audio and is gone: a",
                           "Loops between markers that are gone are switched off"}}));
  // Loops and comments of other markers stay, whatever else they hold.
  EXPECT_EQ(
      followed(markedAIFF({{"INST", Bytes(3)}, {"COMT", Bytes(1)}, {"MARK", marks({{9, 50, ""}})}}),
               Edits::headTrimmed(10))
          .notes,
      std::vector<std::string>{});
}

TEST_F(AIFFPositionsTest, ThatCannotBeUnderstoodAreKeptAndSaid) {
  Bytes lying = marks({{1, 5, "a"}, {2, 30, "b"}});
  lying[1] = std::byte{3};
  EXPECT_EQ(
      followed(markedAIFF({{"MARK", lying}, {"INST", instrument(1, 1)}}), Edits::headTrimmed(10)),
      (FollowedFile{{{"MARK", lying}, {"INST", instrument(1, 1)}},
                    {"The chunk \"MARK\" was kept as it is: it is cut short or damaged"}}));
  // A pad that is missing at the very end is no damage.
  Bytes padless = marks({{1, 5, "a"}, {2, 30, "bb"}});
  padless.pop_back();
  Bytes expected = marks({{2, 20, "bb"}});
  expected.pop_back();
  EXPECT_EQ(followed(markedAIFF({{"MARK", padless}}), Edits::headTrimmed(10)).chunks,
            (std::vector<FollowedChunk>{{"MARK", expected}}));
}

}  // namespace
}  // namespace orvane
