#include "orvane/container/metadata_changes.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <memory>

#include "tests/container/chunked/followed_file.h"
#include "tests/support/random.h"

namespace orvane {
namespace {

namespace Edits = test::Edits;

using test::Bytes;
using test::FollowedChunk;
using test::FollowedFile;

using MetadataChangesTest = test::FollowedFileTest;

TEST_F(MetadataChangesTest, AreNoneWhereNothingChanges) {
  for (const Bytes& bytes : test::markedFiles())
    EXPECT_EQ(test::changesOf(folder().write("file", bytes), Edits::none(), false),
              MetadataChanges{});
}

TEST_F(MetadataChangesTest, DropWhatWasMeasuredOnOtherSamples) {
  const auto ids = [](const FollowedFile& file) {
    std::string all;
    for (const FollowedChunk& chunk : file.chunks) all += chunk.id + ",";
    return all;
  };
  const auto little = test::waveMarkerChunks(std::endian::little);
  const std::vector<std::string> notes = {
      "The loudness stated in bext no longer holds and is unset",
      "The stored peaks (PEAK) no longer hold and are gone",
      "The stored peak envelope (levl) no longer holds and is gone",
      "The stored checksum (MD5) no longer holds and is gone"};
  for (const Bytes& bytes :
       {test::markedWave(little), test::markedWave(little, "RF64"), test::markedWave64(little)}) {
    const FollowedFile result = followed(bytes, Edits::none(), true);
    EXPECT_EQ(ids(result), "cue ,LIST,plst,smpl,cart,bext,iXML,");
    EXPECT_EQ(result.notes, notes);
  }
  const FollowedFile interchange =
      followed(test::markedAIFF(test::aiffMarkerChunks()), Edits::none(), true);
  EXPECT_EQ(ids(interchange), "MARK,COMT,INST,");
  // Here the count of edits says that they are old.
  EXPECT_EQ(test::changesOf(folder().write("file", test::markedCAF(test::cafMarkerChunks())),
                            Edits::none(), true),
            MetadataChanges{});
}

TEST_F(MetadataChangesTest, DropItAlsoWhereFramesOnlyMove) {
  const FollowedFile result = followed(test::markedWave({{"PEAK", Bytes(16)}, {"iXML", Bytes(2)}}),
                                       Edits::headTrimmed(10), false);
  EXPECT_EQ(result.chunks, (std::vector<FollowedChunk>{{"iXML", Bytes(2)}}));
}

TEST_F(MetadataChangesTest, SayWhichMarkersTheyDoNotFollow) {
  const Bytes bytes = test::markedWave({{"r64m", Bytes(320)}}, "RF64");
  const FollowedFile result = followed(bytes, Edits::headTrimmed(10));
  EXPECT_EQ(result.chunks, (std::vector<FollowedChunk>{{"r64m", Bytes(320)}}));
  EXPECT_EQ(result.notes,
            (std::vector<std::string>{
                "The markers in r64m were kept as they are, though frames have moved"}));
  EXPECT_EQ(followed(bytes, Edits::none()).notes, std::vector<std::string>{});
}

TEST_F(MetadataChangesTest, LeaveOtherFilesAlone) {
  const Bytes law = test::formFile(
      "RIFF", "WAVE",
      {{"fmt ", test::waveFormatBody({.tag = 7, .channels = 1, .bits = 8})}, {"data", Bytes(100)}});
  EXPECT_EQ(test::changesOf(folder().write("file", law), Edits::headTrimmed(10)),
            MetadataChanges{});
  const Bytes au = test::auFile(2, 1000, 1, Bytes(100));
  EXPECT_EQ(test::changesOf(folder().write("file", au), Edits::headTrimmed(10)), MetadataChanges{});
}

/// The cue points that libsndfile finds.
std::vector<std::pair<std::uint32_t, std::string>> cuePoints(const std::filesystem::path& path) {
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(sf_open(path.c_str(), SFM_READ, &info),
                                                           &sf_close);
  EXPECT_TRUE(file) << sf_strerror(nullptr);
  SF_CUES cues{};
  if (!file || sf_command(file.get(), SFC_GET_CUE, &cues, sizeof(cues)) != SF_TRUE) return {};
  std::vector<std::pair<std::uint32_t, std::string>> points;
  for (std::uint32_t i = 0; i < cues.cue_count; ++i)
    points.emplace_back(cues.cue_points[i].sample_offset, cues.cue_points[i].name);
  return points;
}

/// The first sampler loop that libsndfile finds.
std::pair<std::uint32_t, std::uint32_t> firstLoop(const std::filesystem::path& path) {
  SF_INFO info{};
  const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(sf_open(path.c_str(), SFM_READ, &info),
                                                           &sf_close);
  SF_INSTRUMENT instrument{};
  EXPECT_EQ(sf_command(file.get(), SFC_GET_INSTRUMENT, &instrument, sizeof(instrument)), SF_TRUE);
  EXPECT_EQ(instrument.loop_count, 1);
  return {instrument.loops[0].start, instrument.loops[0].end};
}

TEST_F(MetadataChangesTest, AreReadByLibsndfile) {
  // It takes the numbers of RIFX for little-endian ones, so that is left out.
  using Points = std::vector<std::pair<std::uint32_t, std::string>>;
  const Bytes bytes = test::markedWave(test::waveMarkerChunks(std::endian::little));
  const auto path = folder().write("before.wav", bytes);
  EXPECT_EQ(cuePoints(path), (Points{{5, "A"}, {50, ""}, {100, ""}}));
  EXPECT_EQ(firstLoop(path), std::pair(20U, 61U));
  // Markers of loops are no cue points to it.
  const Bytes aiffBytes = test::markedAIFF({test::aiffMarkerChunks().front()});
  const auto aiffPath = folder().write("before.aiff", aiffBytes);
  EXPECT_EQ(cuePoints(aiffPath), (Points{{5, "A"}, {50, "BB"}}));
  struct Case {
    FrameFollower frames;
    Points points;
    std::pair<std::uint32_t, std::uint32_t> loop;  // libsndfile gives the frame behind its end
    Points aiffPoints;
  };
  for (const Case& edit : std::vector<Case>{
           {Edits::headTrimmed(10), {{40, ""}, {90, ""}}, {10, 51}, {{40, "BB"}}},
           {Edits::tailTrimmed(10),
            {{5, "A"}, {50, ""}, {90, ""}},
            {20, 61},
            {{5, "A"}, {50, "BB"}}},
           {Edits::cut(25, 35), {{5, "A"}, {40, ""}, {90, ""}}, {20, 51}, {{5, "A"}, {40, "BB"}}},
           {Edits::inserted(30, 7),
            {{5, "A"}, {57, ""}, {107, ""}},
            {20, 68},
            {{5, "A"}, {57, "BB"}}}}) {
    const auto edited = [&](const std::filesystem::path& original, const Bytes& whole) {
      return folder().write("after", test::rewritten(original, whole, edit.frames,
                                                     test::changesOf(original, edit.frames)));
    };
    EXPECT_EQ(cuePoints(edited(path, bytes)), edit.points);
    EXPECT_EQ(firstLoop(edited(path, bytes)), edit.loop);
    EXPECT_EQ(cuePoints(edited(aiffPath, aiffBytes)), edit.aiffPoints);
  }
}

/// Whatever chunks hold there is an answer, each chunk changes at most once, and the result of the
/// changes can be written.
TEST_F(MetadataChangesTest, SurviveDamagedChunks) {
  test::Random random(5);
  const auto containers = test::markedFiles();
  std::size_t changed = 0;
  for (int round = 0; round < 2500; ++round) {
    Bytes bytes = containers[random.below(containers.size())];
    const std::uint64_t hits = 1 + random.below(6);
    for (std::uint64_t i = 0; i < hits; ++i) {
      // Numbers that hurt are the large ones.
      const auto value = random.below(3) == 0 ? 0xFF : random.next();
      bytes[random.below(bytes.size())] = static_cast<std::byte>(value);
    }
    if (random.below(4) == 0) bytes.resize(bytes.size() - random.below(bytes.size() / 2));
    const auto start = static_cast<std::int64_t>(random.below(90));
    const auto path = folder().write("damaged", bytes);
    const FrameFollower frames =
        random.below(2) == 0 ? Edits::cut(start, start + 10) : Edits::inserted(start, 10);
    try {
      const auto changes = test::changesOf(path, frames);
      std::vector<std::size_t> places;
      for (const auto& [index, body] : changes.chunkChanges) {
        places.push_back(index);
        ASSERT_LE(body.value_or(Bytes{}).size(), bytes.size());
      }
      std::ranges::sort(places);
      ASSERT_EQ(std::ranges::adjacent_find(places), places.end());
      // A frame of gigabytes is refused where a file is opened.
      const auto format = test::parsedStream(InputFile(path)).description.dataFormat;
      if (format.bytesPerFrame > 4096) continue;
      const auto edited = folder().write("edited", test::rewritten(path, bytes, frames, changes));
      test::changesOf(edited, frames);
      changed += changes.chunkChanges.size();
    } catch (const PlatformError&) {
    } catch (const UnwritableFormat&) {
    }
  }
  EXPECT_GT(changed, 2000U);
}

}  // namespace
}  // namespace orvane
