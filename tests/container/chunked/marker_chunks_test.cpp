#include "orvane/container/chunked/marker_chunks.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "orvane/container/audio_file.h"
#include "orvane/platform/error.h"
#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;
using test::RawChunk;
using Marks = std::vector<ChapterMark>;

constexpr std::uint32_t kRate = 48000;

class MarkerChunksTest : public testing::Test {
 protected:
  Marks chaptersOf(const Bytes& bytes) {
    return AudioFile::open(folder_.write("marked", bytes))->chapters();
  }
  Marks ofWave(std::vector<RawChunk> chunks, std::string_view form = "RIFF",
               std::endian order = std::endian::little) {
    chunks.insert(chunks.begin(),
                  {.id = "fmt ", .body = test::waveFormatBody({.sampleRate = kRate}, order)});
    if (form == "BW64" || form == "RF64")
      chunks.insert(chunks.begin(), {.id = "ds64", .body = test::longSizesBody(0, 400, 100)});
    chunks.insert(chunks.end() - 1, {.id = "data", .body = Bytes(400)});
    return chaptersOf(test::formFile(form, "WAVE", chunks));
  }

  const test::TemporaryDirectory& folder() const { return folder_; }

 private:
  test::TemporaryDirectory folder_{};
};

/// One entry of a `cue ` chunk.
void putPoint(ByteWriter& writer, std::uint32_t id, std::uint32_t frame) {
  writer.u32(id).u32(0).text("data").u32(0).u32(0).u32(frame);
}

RawChunk cueChunk(const std::vector<std::pair<std::uint32_t, std::uint32_t>>& points,
                  std::endian order = std::endian::little) {
  ByteWriter writer(order);
  writer.u32(points.size());
  for (const auto& [id, frame] : points) putPoint(writer, id, frame);
  return {.id = "cue ", .body = writer.bytes()};
}

/// One sub-chunk of an associated data list, about a cue point.
void putText(ByteWriter& writer, std::string_view id, std::uint32_t point, std::string_view text,
             std::optional<std::uint32_t> frames = {}) {
  const std::size_t size = 4 + (frames ? 16 : 0) + text.size() + 1;
  writer.text(id).u32(size).u32(point);
  if (frames) writer.u32(*frames).text("rgn ").u64(0);
  writer.text(text).u8(0);
  if (size % 2 == 1) writer.u8(0);
}

TEST_F(MarkerChunksTest, AreTheCuePointsOfWAVEWithTheirLabels) {
  ByteWriter list;
  list.text("adtl");
  putText(list, "labl", 7, "Second");
  putText(list, "note", 7, "a note");
  putText(list, "note", 3, "First, by its note");
  const Marks expected = {{1, {}, "First, by its note"}, {2.5, {}, "Second"}, {3, {}, ""}};
  for (const char* form : {"RIFF", "RF64", "BW64"})
    EXPECT_EQ(ofWave({cueChunk({{7, 120'000}, {3, 48'000}, {9, 144'000}}),
                      {.id = "LIST", .body = list.bytes()}},
                     form),
              expected)
        << form;
}

TEST_F(MarkerChunksTest, AreBigEndianInRIFX) {
  ByteWriter list(std::endian::big);
  list.text("adtl");
  putText(list, "labl", 1, "Name");
  EXPECT_EQ(
      ofWave({cueChunk({{1, 24'000}}, std::endian::big), {.id = "LIST", .body = list.bytes()}},
             "RIFX", std::endian::big),
      (Marks{{0.5, {}, "Name"}}));
}

TEST_F(MarkerChunksTest, HaveAnEndWhereTheyAreRegions) {
  ByteWriter list;
  list.text("adtl");
  putText(list, "ltxt", 1, "Region", 24'000);
  putText(list, "labl", 2, "Label");
  putText(list, "ltxt", 2, "", 48'000);
  EXPECT_EQ(ofWave({cueChunk({{1, 0}, {2, 48'000}}), {.id = "LIST", .body = list.bytes()}}),
            (Marks{{0, 0.5, "Region"}, {1, 2, "Label"}}));
}

TEST_F(MarkerChunksTest, AreFoundInAnyList) {
  ByteWriter info;
  info.text("INFO").text("INAM").u32(2).text("x").u8(0);
  ByteWriter list;
  list.text("adtl");
  putText(list, "labl", 1, "Caf\xE9");
  EXPECT_EQ(ofWave({{.id = "LIST", .body = info.bytes()},
                    cueChunk({{1, 0}}),
                    {.id = "LIST", .body = list.bytes()}}),
            (Marks{{0, {}, "Café"}}));
}

TEST_F(MarkerChunksTest, ThatAreDamagedArePassedOver) {
  ByteWriter list;
  list.text("adtl");
  putText(list, "labl", 1, "good");
  list.text("labl").u32(0xFFFFFFFF).u32(2).text("endless");
  ByteWriter cue;
  cue.u32(0xFFFFFFFF);
  putPoint(cue, 1, 48'000);
  cue.u32(5);
  EXPECT_EQ(ofWave({{.id = "cue ", .body = cue.bytes()}, {.id = "LIST", .body = list.bytes()}}),
            (Marks{{1, {}, "good"}}));
  EXPECT_EQ(ofWave({{.id = "cue ", .body = Bytes(2)}}), Marks{});
  EXPECT_EQ(ofWave({{.id = "LIST", .body = list.bytes()}}), Marks{});
}

TEST_F(MarkerChunksTest, AreNoMoreThanTenThousand) {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> points;
  for (std::uint32_t i = 0; i < 10'100; ++i) points.emplace_back(i, i);
  EXPECT_EQ(ofWave({cueChunk(points)}).size(), kMaximumEmbeddedChapters);
}

/// One marker of an AIFF `MARK` chunk.
void putMarker(ByteWriter& writer, std::uint16_t id, std::uint32_t frame, std::string_view name) {
  writer.u16(id).u32(frame).u8(name.size()).text(name);
  if (name.size() % 2 == 0) writer.u8(0);
}

TEST_F(MarkerChunksTest, AreTheMarkersOfAIFF) {
  ByteWriter mark(std::endian::big);
  mark.u16(3);
  putMarker(mark, 1, 96'000, "odd");
  putMarker(mark, 2, 48'000, "even");
  putMarker(mark, 3, 144'000, "");
  const auto chaptersIn = [&](const Bytes& body) {
    return chaptersOf(test::formFile("FORM", "AIFF",
                                     {{.id = "COMM", .body = test::commonBody(2, 4, 16, kRate)},
                                      {.id = "SSND", .body = test::soundBody(Bytes(16))},
                                      {.id = "MARK", .body = body}}));
  };
  EXPECT_EQ(chaptersIn(mark.bytes()), (Marks{{1, {}, "even"}, {2, {}, "odd"}, {3, {}, ""}}));
  for (Bytes cut = mark.bytes(); !cut.empty(); cut.pop_back())
    EXPECT_LE(chaptersIn(cut).size(), 3U);
}

/// A marker of a CAF `mark` chunk.
void putMarker(ByteWriter& writer, std::string_view type, double frame, std::uint32_t id) {
  if (type.empty())
    writer.u32(0);
  else
    writer.text(type);
  writer.float64(frame).u32(id).u64(0xFFFFFFFFFFFFFFFF).u32(0);
}

TEST_F(MarkerChunksTest, AreTheMarkersOfCAFWithTheirStrings) {
  ByteWriter mark(std::endian::big);
  mark.u32(0).u32(4);
  putMarker(mark, "tbeg", 48'000, 2);
  putMarker(mark, "", 0, 1);
  putMarker(mark, "tend", 96'000, 2);
  putMarker(mark, "rbeg", 120'000, 9);
  ByteWriter strings(std::endian::big);
  strings.u32(2).u32(1).u64(0).u32(2).u64(6).text("Intro").u8(0).text("Track").u8(0);
  const std::vector<RawChunk> chunks = {
      {.id = "desc", .body = test::cafDescriptionBody(kRate, 2, {})},
      {.id = "data", .body = test::cafDataBody(Bytes(16))},
      {.id = "mark", .body = mark.bytes()},
      {.id = "strg", .body = strings.bytes()}};
  EXPECT_EQ(chaptersOf(test::cafFile(chunks)),
            (Marks{{0, {}, "Intro"}, {1, {}, "Track"}, {2.5, {}, ""}}));
}

TEST_F(MarkerChunksTest, ThatLieNowhereAreLeftOut) {
  ByteWriter mark(std::endian::big);
  mark.u32(0).u32(3);
  putMarker(mark, "", -1, 1);
  putMarker(mark, "", std::numeric_limits<double>::quiet_NaN(), 1);
  putMarker(mark, "", std::numeric_limits<double>::infinity(), 1);
  ByteWriter strings(std::endian::big);
  strings.u32(0xFFFFFFFF).u32(1).u64(0);
  EXPECT_EQ(
      chaptersOf(test::cafFile({{.id = "desc", .body = test::cafDescriptionBody(kRate, 2, {})},
                                {.id = "data", .body = test::cafDataBody(Bytes(16))},
                                {.id = "mark", .body = mark.bytes()},
                                {.id = "strg", .body = strings.bytes()}})),
      Marks{});
}

TEST_F(MarkerChunksTest, AreNoneInFilesWithoutAny) {
  EXPECT_EQ(ofWave({{.id = "junk", .body = Bytes(8)}}), Marks{});
  EXPECT_EQ(chaptersOf(test::auFile(3, kRate, 2, Bytes(16))), Marks{});
  EXPECT_THROW(chaptersOf(Bytes(100)), PlatformError);
  EXPECT_THROW(AudioFile::open(folder() / "missing")->chapters(), PlatformError);
}

}  // namespace
}  // namespace orvane
