#include "orvane/container/chunked/broadcast_extension.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/container/chunked/followed_file.h"

namespace orvane {
namespace {

namespace Edits = test::Edits;

using test::Bytes;
using test::ByteWriter;
using test::FollowedChunk;
using test::FollowedFile;
using test::markedWave;
using test::Notes;

using BroadcastExtensionTest = test::FollowedFileTest;

Bytes broadcast(std::uint64_t reference, std::uint16_t version, const std::vector<int>& loudness,
                std::endian order = std::endian::little) {
  ByteWriter writer(order);
  writer.text("description").zeros(327).u32(reference & 0xFFFFFFFF).u32(reference >> 32U);
  writer.u16(version).zeros(64);
  for (const int figure : loudness) writer.u16(static_cast<std::uint16_t>(figure));
  return writer.zeros(180).text("A=PCM,F=48000\r\n").bytes();
}
Bytes broadcast(std::uint64_t reference, std::uint16_t version, int loudness = -2300,
                std::endian order = std::endian::little) {
  return broadcast(reference, version, std::vector<int>(5, loudness), order);
}

constexpr int kUnset = 0x7FFF;

TEST_F(BroadcastExtensionTest, MovesTheTimeReferenceWithTheHead) {
  Notes notes;
  const std::uint64_t late = 0x1FFFFFFFB;
  EXPECT_EQ(after(Edits::headTrimmed(10), "bext", broadcast(late, 1), &notes),
            broadcast(late + 10, 1));
  EXPECT_EQ(notes, Notes{"The time reference (bext) is now 10 frames later"});
  EXPECT_EQ(after(Edits::inserted(0, 20), "bext", broadcast(0x100000005, 1), &notes),
            broadcast(0xFFFFFFF1, 1));
  EXPECT_EQ(notes, Notes{"The time reference (bext) is now 20 frames earlier"});
  EXPECT_EQ(after(Edits::inserted(0, 20), "bext", broadcast(5, 1)), broadcast(0, 1));
  for (const auto& frames :
       {Edits::tailTrimmed(10), Edits::cut(40, 60), Edits::inserted(50, 20), Edits::none()})
    EXPECT_EQ(after(frames, "bext", broadcast(late, 1), &notes), broadcast(late, 1));
  EXPECT_EQ(notes, Notes{});
  EXPECT_EQ(after(Edits::headTrimmed(10), "bext", broadcast(UINT64_MAX, 1)),
            broadcast(UINT64_MAX, 1));

  const auto big = [](std::uint64_t reference, int loudness) {
    return broadcast(reference, 2, loudness, std::endian::big);
  };
  EXPECT_EQ(followed(markedWave({{"bext", big(7, 0)}}, "RIFX"), Edits::headTrimmed(10)).chunks,
            (std::vector<FollowedChunk>{{"bext", big(17, kUnset)}}));
}

TEST_F(BroadcastExtensionTest, LosesTheLoudnessOfOtherSamples) {
  Notes notes;
  EXPECT_EQ(after(Edits::none(), "bext", broadcast(7, 2), &notes), broadcast(7, 2, kUnset));
  EXPECT_EQ(notes, Notes{"The loudness stated in bext no longer holds and is unset"});
  EXPECT_EQ(after(Edits::none(), "bext", broadcast(7, 2, kUnset), &notes), broadcast(7, 2, kUnset));
  EXPECT_EQ(notes, Notes{});
  // Before version 2 these bytes were reserved.
  EXPECT_EQ(after(Edits::none(), "bext", broadcast(7, 1, 0)), broadcast(7, 1, 0));
}

TEST_F(BroadcastExtensionTest, StatesLoudnessInHundredths) {
  // EBU Tech 3285 rounds to nearest; what lies beyond the fields is not stated.
  const BroadcastLoudness loudness{.integratedLUFS = -22.646F,
                                   .rangeLU = 5.125F,
                                   .maxTruePeakDB = 1.5F,
                                   .maxMomentaryLUFS = -std::numeric_limits<float>::infinity(),
                                   .maxShortTermLUFS = 100};
  const std::vector<int> stated = {-2265, 513, 150, kUnset, kUnset};
  for (const int version : {0, 1, 2, 3}) {
    const auto written = static_cast<std::uint16_t>(version);
    const FollowedFile result = followed(markedWave({{"bext", broadcast(7, written)}}),
                                         Edits::headTrimmed(10), true, loudness);
    const auto after = static_cast<std::uint16_t>(std::max(version, 2));
    EXPECT_EQ(result.chunks, (std::vector<FollowedChunk>{{"bext", broadcast(17, after, stated)}}));
    EXPECT_EQ(result.notes, Notes{"The time reference (bext) is now 10 frames later"});
  }
  const Bytes big = broadcast(7, 2, -2300, std::endian::big);
  EXPECT_EQ(followed(markedWave({{"bext", big}}, "RIFX"), Edits::none(), false, loudness).chunks,
            (std::vector<FollowedChunk>{{"bext", broadcast(7, 2, stated, std::endian::big)}}));
}

TEST_F(BroadcastExtensionTest, IsAddedForTheLoudness) {
  const BroadcastLoudness loudness{.integratedLUFS = -23, .maxTruePeakDB = -1};
  Bytes expected(602);
  expected[346] = std::byte{2};
  const int fields[] = {-2300, kUnset, -100, kUnset, kUnset};
  for (std::size_t i = 0; i < 5; ++i) {
    expected[412 + 2 * i] = static_cast<std::byte>(fields[i]);
    expected[413 + 2 * i] = static_cast<std::byte>(fields[i] >> 8);
  }
  const Bytes peaks(16);
  for (const Bytes& bytes : {markedWave({{"PEAK", peaks}}), markedWave({{"PEAK", peaks}}, "RF64"),
                             test::markedWave64({{"PEAK", peaks}})}) {
    const FollowedFile result = followed(bytes, Edits::none(), false, loudness);
    EXPECT_EQ(result.added, (std::vector<FollowedChunk>{{"bext", expected}}));
    EXPECT_EQ(result.chunks.size(), 1U);  // the peaks are still true
    EXPECT_EQ(result.notes, Notes{});
  }
  EXPECT_EQ(followed(test::markedAIFF({}), Edits::none(), false, loudness), FollowedFile{});
  EXPECT_EQ(followed(test::markedCAF({}), Edits::none(), false, loudness), FollowedFile{});
}

}  // namespace
}  // namespace orvane
