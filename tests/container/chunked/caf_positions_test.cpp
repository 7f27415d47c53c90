#include "orvane/container/chunked/caf_positions.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/container/chunked/followed_file.h"

namespace orvane {
namespace {

namespace Edits = test::Edits;

using test::Bytes;
using test::ByteWriter;
using test::FollowedChunk;
using test::FollowedFile;
using test::markedCAF;

using CAFPositionsTest = test::FollowedFileTest;

struct Marker {
  std::string kind{};
  double frame = 0;
  std::uint32_t id = 0;
};
using Markers = std::vector<Marker>;

void put(ByteWriter& writer, const Marker& marker) {
  writer.text(marker.kind).float64(marker.frame).u32(marker.id).text("hmsfsubf").u32(2);
}

Bytes marks(const Markers& markers) {
  ByteWriter writer(std::endian::big);
  writer.u32(7).u32(markers.size());
  for (const Marker& marker : markers) put(writer, marker);
  return writer.bytes();
}

struct Region {
  std::uint32_t id = 0;
  Markers markers{};
};

Bytes regions(const std::vector<Region>& list) {
  ByteWriter writer(std::endian::big);
  writer.u32(7).u32(list.size());
  for (const auto& [id, markers] : list) {
    writer.u32(id).u32(3).u32(markers.size());
    for (const Marker& marker : markers) put(writer, marker);
  }
  return writer.bytes();
}

Bytes strings(const std::vector<std::pair<std::uint32_t, std::string>>& texts) {
  ByteWriter writer(std::endian::big);
  ByteWriter all;
  writer.u32(texts.size());
  for (const auto& [id, text] : texts) {
    writer.u32(id).u64(all.size());
    all.text(text).u8(0);
  }
  return writer.append(all.bytes()).bytes();
}

TEST_F(CAFPositionsTest, FollowTheEdit) {
  const Bytes names = strings({{1, "Intro"}, {2, "Song"}});
  const Bytes before =
      marks({{"pbeg", 5.5, 1}, {"tbeg", 30.25, 2}, {"pend", 100, 3}, {"mnul", -1, 4}});
  const auto after = [&](const FrameFollower& frames, const Markers& expected,
                         const std::vector<std::string>& notes) {
    EXPECT_EQ(followed(markedCAF({{"mark", before}, {"strg", names}}), frames),
              (FollowedFile{{{"mark", marks(expected)}, {"strg", names}}, notes}));
  };
  after(Edits::headTrimmed(10), {{"tbeg", 20.25, 2}, {"pend", 90, 3}, {"mnul", -1, 4}},
        {"1 marker lay in removed audio and is gone: Intro"});
  after(Edits::tailTrimmed(70), {{"pbeg", 5.5, 1}, {"pend", 30, 3}, {"mnul", -1, 4}},
        {"1 marker lay in removed audio and is gone: Song"});
  after(Edits::cut(10, 20),
        {{"pbeg", 5.5, 1}, {"tbeg", 20.25, 2}, {"pend", 90, 3}, {"mnul", -1, 4}}, {});
  after(Edits::inserted(30, 5),
        {{"pbeg", 5.5, 1}, {"tbeg", 35.25, 2}, {"pend", 105, 3}, {"mnul", -1, 4}}, {});
  after(Edits::none(), {{"pbeg", 5.5, 1}, {"tbeg", 30.25, 2}, {"pend", 100, 3}, {"mnul", -1, 4}},
        {});
  EXPECT_EQ(
      followed(markedCAF({{"mark", marks({{"pbeg", 5, 9}})}, {"strg", names}}),
               Edits::headTrimmed(10)),
      (FollowedFile{{{"strg", names}}, {"1 marker lay in removed audio and is gone: at 0.005 s"}}));
}

/// A loop was left without its beginning, or with an end that lay elsewhere.
TEST_F(CAFPositionsTest, OfLoopsAndRegionsGoTogether) {
  const Bytes before = marks({{"rbeg", 5, 1},
                              {"slbg", 20, 2},
                              {"slen", 60, 3},
                              {"rend", 70, 4},
                              {"rlen", 80, 5}});  // without a beginning
  const auto after = [&](const FrameFollower& frames, const Markers& expected) {
    EXPECT_EQ(followed(markedCAF({{"mark", before}}), frames).chunks,
              (std::vector<FollowedChunk>{{"mark", marks(expected)}}));
  };
  after(Edits::headTrimmed(10), {{"slbg", 10, 2}, {"slen", 50, 3}, {"rlen", 70, 5}});
  after(Edits::cut(15, 25), {{"rbeg", 5, 1}, {"rend", 60, 4}, {"rlen", 70, 5}});
  after(Edits::cut(50, 75), {{"rbeg", 5, 1}, {"rend", 50, 4}, {"rlen", 55, 5}});
  after(Edits::inserted(30, 5),
        {{"rbeg", 5, 1}, {"slbg", 20, 2}, {"slen", 65, 3}, {"rend", 75, 4}, {"rlen", 85, 5}});
}

TEST_F(CAFPositionsTest, OfRegionsMoveEndAndGo) {
  const Bytes before = regions({{1, {{"rsyc", 20, 5}, {"rbeg", 15, 6}, {"rend", 50.5, 7}}},
                                {2, {{"rbeg", 60, 0}, {"rend", 100, 0}}},
                                {3, {}},
                                {4, {{"mnul", 70, 0}}}});
  const auto after = [&](const FrameFollower& frames, const std::vector<Region>& expected,
                         const std::vector<std::string>& notes) {
    const FollowedFile result = followed(markedCAF({{"regn", before}}), frames);
    EXPECT_EQ(result, (FollowedFile{{{"regn", regions(expected)}}, notes}));
  };
  after(Edits::headTrimmed(10),
        {{1, {{"rsyc", 10, 5}, {"rbeg", 5, 6}, {"rend", 40.5, 7}}},
         {2, {{"rbeg", 50, 0}, {"rend", 90, 0}}},
         {3, {}},
         {4, {{"mnul", 60, 0}}}},
        {});
  after(Edits::headTrimmed(18),
        {{2, {{"rbeg", 42, 0}, {"rend", 82, 0}}}, {3, {}}, {4, {{"mnul", 52, 0}}}},
        {"1 region began in removed audio and is gone: at 0.015 s"});
  after(Edits::cut(18, 22),
        {{1, {{"rbeg", 15, 6}, {"rend", 46.5, 7}}},
         {2, {{"rbeg", 56, 0}, {"rend", 96, 0}}},
         {3, {}},
         {4, {{"mnul", 66, 0}}}},
        {"1 region marker lay in removed audio and is gone: at 0.020 s"});
  after(
      Edits::cut(40, 70),
      {{1, {{"rsyc", 20, 5}, {"rbeg", 15, 6}, {"rend", 40.5, 7}}}, {3, {}}, {4, {{"mnul", 40, 0}}}},
      {"1 region began in removed audio and is gone: at 0.060 s"});
  after(Edits::inserted(100, 9),
        {{1, {{"rsyc", 20, 5}, {"rbeg", 15, 6}, {"rend", 50.5, 7}}},
         {2, {{"rbeg", 60, 0}, {"rend", 100, 0}}},
         {3, {}},
         {4, {{"mnul", 70, 0}}}},
        {});
}

TEST_F(CAFPositionsTest, ThatCannotBeUnderstoodAreKeptAndSaid) {
  Bytes lying = marks({{"pbeg", 5, 1}});
  lying[7] = std::byte{2};
  Bytes many = regions({{1, {{"rbeg", 5, 1}}}});
  many[16] = std::byte{0xFF};
  EXPECT_EQ(followed(markedCAF({{"mark", lying}, {"regn", many}}), Edits::headTrimmed(10)),
            (FollowedFile{{{"mark", lying}, {"regn", many}},
                          {"The chunk \"mark\" was kept as it is: it is cut short or damaged",
                           "The chunk \"regn\" was kept as it is: it is cut short or damaged"}}));
  // What is no number is no place.
  const Bytes odd = regions({{1, {{"rbeg", std::nan(""), 1}, {"rend", HUGE_VAL, 2}}}});
  EXPECT_EQ(followed(markedCAF({{"regn", odd}}), Edits::headTrimmed(10)),
            (FollowedFile{{{"regn", odd}}, {}}));
}

}  // namespace
}  // namespace orvane
