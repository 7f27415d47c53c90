#include "orvane/container/chunked/wave_positions.h"

#include <gtest/gtest.h>

#include "tests/container/chunked/followed_file.h"

namespace orvane {
namespace {

namespace Edits = test::Edits;

using test::Bytes;
using test::ByteWriter;
using test::FollowedChunk;
using test::FollowedFile;
using test::markedWave;
using test::markedWave64;
using test::Notes;
using test::RawChunk;

using WavePositionsTest = test::FollowedFileTest;

struct Point {
  std::uint32_t id = 0;
  std::uint32_t frame = 0;
  std::optional<std::uint32_t> position{};
};

Bytes cue(const std::vector<Point>& points, std::endian order = std::endian::little) {
  ByteWriter writer(order);
  writer.u32(points.size());
  for (const Point& point : points)
    writer.u32(point.id)
        .u32(point.position.value_or(point.frame))
        .text("data")
        .u64(0)
        .u32(point.frame);
  return writer.bytes();
}

/// A sub-chunk of an associated data list.
struct Text {
  std::string kind{};
  std::uint32_t point = 0;
  std::string text{};
  std::optional<std::uint32_t> frames{};
};

Bytes list(const std::vector<Text>& texts, std::endian order = std::endian::little) {
  ByteWriter writer(order);
  writer.text("adtl");
  for (const auto& [kind, point, text, frames] : texts) {
    const std::size_t size = 4 + (frames ? 16 : 0) + text.size();
    writer.text(kind).u32(size).u32(point);
    if (frames) writer.u32(*frames).text("rgn ").u64(7);
    writer.text(text).zeros(size % 2);
  }
  return writer.bytes();
}

struct Segment {
  std::uint32_t point = 0;
  std::uint32_t frames = 0;
};

Bytes playlist(const std::vector<Segment>& segments) {
  ByteWriter writer;
  writer.u32(segments.size());
  for (const Segment& segment : segments) writer.u32(segment.point).u32(segment.frames).u32(3);
  return writer.bytes();
}

TEST_F(WavePositionsTest, MoveWithTheHead) {
  const auto trimmed = [](std::endian order) {
    return std::pair(cue({{1, 5}, {2, 10}, {3, 60}, {4, 100}}, order),
                     cue({{2, 0}, {3, 50}, {4, 90}}, order));
  };
  for (const char* form : {"RIFF", "RIFX", "RF64", "BW64"}) {
    const auto order = std::string(form) == "RIFX" ? std::endian::big : std::endian::little;
    const auto [before, expected] = trimmed(order);
    const Bytes texts = list({{"labl", 1, "First"}, {"labl", 2, "odd"}, {"note", 1, "x"}}, order);
    EXPECT_EQ(
        followed(markedWave({{"LIST", texts}, {"cue ", before}}, form), Edits::headTrimmed(10)),
        (FollowedFile{{{"LIST", list({{"labl", 2, "odd"}}, order)}, {"cue ", expected}},
                      {"1 marker lay in removed audio and is gone: First"}}))
        << form;
  }
  const auto [before, expected] = trimmed(std::endian::little);
  EXPECT_EQ(followed(markedWave64({{"cue ", before}}), Edits::headTrimmed(10)).chunks,
            (std::vector<FollowedChunk>{{"cue ", expected}}));
}

TEST_F(WavePositionsTest, BeyondANewEndGoWithTheirTexts) {
  const Bytes texts = list({{"labl", 7, "A"},
                            {"note", 8, "B"},
                            {"ltxt", 9, "C", 5},
                            {"file", 9, "picture"},
                            {"labl", 7, "A again"},
                            {"xyz!", 9, "unknown"},
                            {"labl", 99, "of nothing"}});
  EXPECT_EQ(
      followed(markedWave({{"cue ", cue({{7, 20}, {8, 95}, {9, 90}, {10, 99}})}, {"LIST", texts}}),
               Edits::tailTrimmed(10)),
      (FollowedFile{{{"cue ", cue({{7, 20}})},
                     {"LIST", list({{"labl", 7, "A"},
                                    {"labl", 7, "A again"},
                                    {"xyz!", 9, "unknown"},
                                    {"labl", 99, "of nothing"}})}},
                    {"3 markers lay in removed audio and are gone: B, C, at 0.099 s"}}));
}

TEST_F(WavePositionsTest, LeaveNoEmptyChunksBehind) {
  const Bytes information = ByteWriter().text("INFOINAM").u32(2).text("x").u8(0).bytes();
  const FollowedFile result = followed(markedWave({{"cue ", cue({{1, 99}})},
                                                   {"plst", playlist({{1, 5}})},
                                                   {"LIST", list({{"labl", 1, "A"}})},
                                                   {"LIST", information}}),
                                       Edits::tailTrimmed(10));
  EXPECT_EQ(result,
            (FollowedFile{{{"LIST", information}},
                          {"1 marker lay in removed audio and is gone: A",
                           "1 playlist segment began in removed audio and is gone: at 0.099 s"}}));
  // What was empty before stays.
  EXPECT_EQ(after(Edits::tailTrimmed(10), "cue ", cue({})), cue({}));
}

TEST_F(WavePositionsTest, CloseUpAroundACut) {
  const Bytes points = cue({{1, 10}, {2, 45}, {3, 60}, {4, 30}});
  const auto regions = [](std::uint32_t across, std::uint32_t behind, std::uint32_t into) {
    return list({{"ltxt", 1, "", across}, {"ltxt", 3, "", behind}, {"ltxt", 4, "", into}});
  };
  EXPECT_EQ(
      followed(markedWave({{"cue ", points}, {"LIST", regions(70, 20, 15)}}), Edits::cut(40, 60)),
      (FollowedFile{{{"cue ", cue({{1, 10}, {3, 40}, {4, 30}})}, {"LIST", regions(50, 20, 10)}},
                    {"1 marker lay in removed audio and is gone: at 0.045 s"}}));
}

TEST_F(WavePositionsTest, MakeRoomForInsertedSilence) {
  const auto file = [](std::uint32_t second, std::uint32_t end, std::uint32_t first,
                       std::uint32_t across) {
    return std::vector<FollowedChunk>{{"cue ", cue({{1, 10}, {2, second}, {3, end}})},
                                      {"LIST", list({{"ltxt", 1, "", across}})},
                                      {"plst", playlist({{1, first}, {2, 10}, {77, 4}})}};
  };
  std::vector<RawChunk> chunks;
  for (const auto& [id, body] : file(50, 100, 40, 60)) chunks.push_back({id, body});
  const FollowedFile result = followed(markedWave(chunks), Edits::inserted(50, 20));
  EXPECT_EQ(result, (FollowedFile{file(70, 120, 40, 80), {}}));
}

TEST_F(WavePositionsTest, KeepWhatIsNoFrame) {
  // Unused positions, positions that differ, places behind the audio, all ones.
  EXPECT_EQ(after(Edits::headTrimmed(10), "cue ",
                  cue({{1, 20, 0}, {2, 30, 50}, {3, 40, 3}, {4, 120}, {5, 0xFFFFFFFF}})),
            cue({{1, 10, 0}, {2, 20, 40}, {3, 30, 30}, {4, 110}, {5, 0xFFFFFFFF}}));
  EXPECT_EQ(after(Edits::inserted(0, 5), "cue ", cue({{1, 0}})), cue({{1, 5}}));
  // Bytes behind the points belong to nobody.
  const auto withTail = [](const Bytes& body) {
    return ByteWriter().append(body).text("tail").bytes();
  };
  EXPECT_EQ(after(Edits::headTrimmed(10), "cue ", withTail(cue({{1, 3}, {2, 20}}))),
            withTail(cue({{2, 10}})));
}

TEST_F(WavePositionsTest, GoWhereTheirFieldCannotHoldThem) {
  const std::int64_t growth = std::int64_t{1} << 32;
  Notes notes;
  EXPECT_EQ(after(Edits::inserted(50, growth), "cue ", cue({{1, 10}, {2, 60}}), &notes),
            cue({{1, 10}}));
  EXPECT_EQ(notes.size(), 1U);
}

TEST_F(WavePositionsTest, NameNoMoreThanTen) {
  std::vector<Point> points;
  for (std::uint32_t i = 0; i < 12; ++i) points.push_back({i, i});
  Notes notes;
  after(Edits::headTrimmed(20), "cue ", cue(points), &notes);
  ASSERT_EQ(notes.size(), 1U);
  EXPECT_EQ(notes[0],
            "12 markers lay in removed audio and are gone: at 0.000 s, at 0.001 s, at 0.002 s, "
            "at 0.003 s, at 0.004 s, at 0.005 s, at 0.006 s, at 0.007 s, at 0.008 s, at 0.009 s "
            "and 2 more");
}

TEST_F(WavePositionsTest, AreNamedInBrief) {
  std::string name(59, 'x');
  const auto noteFor = [&](const std::string& text) {
    const Bytes texts = list({{"labl", 1, text}});
    return followed(markedWave({{"cue ", cue({{1, 5}})}, {"LIST", texts}}), Edits::headTrimmed(10))
        .notes;
  };
  const std::string what = "1 marker lay in removed audio and is gone: ";
  EXPECT_EQ(noteFor(name + "é"), Notes{what + name + "é"});
  EXPECT_EQ(noteFor(name + "éa"), Notes{what + name + "é…"});
}

TEST_F(WavePositionsTest, ThatCannotBeUnderstoodAreKeptAndSaid) {
  const std::string damaged = "was kept as it is: it is cut short or damaged";
  ByteWriter lying;
  lying.append(cue({{1, 3}})).u32(4);
  Bytes manyPoints = lying.bytes();
  manyPoints[0] = std::byte{9};
  Notes notes;
  EXPECT_EQ(after(Edits::headTrimmed(10), "cue ", manyPoints, &notes), manyPoints);
  EXPECT_EQ(notes, Notes{"The chunk \"cue \" " + damaged});
  for (const char* id : {"cue ", "smpl", "cart", "bext"}) {
    EXPECT_EQ(after(Edits::headTrimmed(10), id, Bytes(3), &notes), Bytes(3)) << id;
    EXPECT_EQ(notes, Notes{"The chunk \"" + std::string(id) + "\" " + damaged});
  }
  Bytes texts = list({{"labl", 1, "A"}});
  texts[8] = std::byte{200};
  const FollowedFile result =
      followed(markedWave({{"cue ", cue({{1, 3}, {2, 50}})}, {"LIST", texts}, {"LIST", texts}}),
               Edits::headTrimmed(10));
  EXPECT_EQ(result.chunks[1], (FollowedChunk{"LIST", texts}));
  EXPECT_EQ(result.notes.back(), "The chunk \"LIST\" " + damaged);
  EXPECT_EQ(result.notes.size(), 2U);  // said once

  const Bytes huge((16U << 20U) + 2);
  EXPECT_EQ(after(Edits::headTrimmed(10), "cue ", huge, &notes), huge);
  EXPECT_EQ(notes, Notes{"The chunk \"cue \" was kept as it is: it is larger than 16 MiB"});
}

struct Loop {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
};

Bytes sampler(const std::vector<Loop>& loops) {
  ByteWriter writer;
  for (std::uint32_t i = 1; i <= 7; ++i) writer.u32(i);
  writer.u32(loops.size()).u32(5);
  for (const Loop& loop : loops)
    writer.u32(9).u32(1).u32(loop.first).u32(loop.last).u32(11).u32(12);
  return writer.text("maker").bytes();
}

TEST_F(WavePositionsTest, AreThoseOfLoops) {
  const Bytes loops = sampler({{5, 50}, {20, 30}, {60, 99}, {70, 100}});
  Notes notes;
  EXPECT_EQ(after(Edits::headTrimmed(10), "smpl", loops, &notes),
            sampler({{10, 20}, {50, 89}, {60, 90}}));
  EXPECT_EQ(notes, Notes{"1 loop began or ended in removed audio and is gone: at 0.005 s"});
  EXPECT_EQ(after(Edits::tailTrimmed(10), "smpl", loops), sampler({{5, 50}, {20, 30}, {70, 90}}));
  EXPECT_EQ(after(Edits::cut(45, 55), "smpl", loops), sampler({{20, 30}, {50, 89}, {60, 90}}));
  EXPECT_EQ(after(Edits::inserted(25, 5), "smpl", loops),
            sampler({{5, 55}, {20, 35}, {65, 104}, {75, 105}}));
  EXPECT_EQ(after(Edits::tailTrimmed(99), "smpl", sampler({{20, 30}})), sampler({}));
}

struct Timer {
  std::string usage{std::string(4, '\0')};
  std::uint32_t frame = 0;
};

Bytes cart(const std::vector<Timer>& timers) {
  ByteWriter writer;
  writer.text("0101").zeros(676).u32(32768);
  for (std::size_t i = 0; i < 8; ++i) {
    const Timer timer = i < timers.size() ? timers[i] : Timer{};
    writer.text(timer.usage).u32(timer.frame);
  }
  return writer.zeros(276).text("web").zeros(1021).text("tags").bytes();
}

TEST_F(WavePositionsTest, AreThoseOfTimers) {
  const Bytes timers = cart({{"SEGs", 5}, {"INT1", 30}, {"EOD ", 100}});
  Notes notes;
  EXPECT_EQ(after(Edits::headTrimmed(10), "cart", timers, &notes),
            cart({{}, {"INT1", 20}, {"EOD ", 90}}));
  EXPECT_EQ(notes, Notes{"1 cart timer lay in removed audio and is gone: SEGs"});
  EXPECT_EQ(after(Edits::tailTrimmed(10), "cart", timers),
            cart({{"SEGs", 5}, {"INT1", 30}, {"EOD ", 90}}));
  EXPECT_EQ(after(Edits::cut(30, 35), "cart", timers), cart({{"SEGs", 5}, {}, {"EOD ", 95}}));
  EXPECT_EQ(after(Edits::inserted(10, 5), "cart", timers),
            cart({{"SEGs", 5}, {"INT1", 35}, {"EOD ", 105}}));
  // Unused timers are no places.
  EXPECT_EQ(after(Edits::headTrimmed(10), "cart", cart({})), cart({}));
}

}  // namespace
}  // namespace orvane
