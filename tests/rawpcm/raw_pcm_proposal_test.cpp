#include "orvane/rawpcm/raw_pcm_proposal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <set>

#include "orvane/platform/error.h"
#include "tests/rawpcm/raw_pcm_samples.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using RawPCMGuesser::candidateGrid;
using RawPCMGuesser::Known;
using RawPCMGuesser::propose;
using RawPCMGuesser::rank;
using test::Bytes;

constexpr std::uint32_t kRate = 48000;

class RawPCMProposal : public testing::Test {
 protected:
  static Bytes tone(std::size_t frames, std::size_t channels = 1) {
    const auto sine = test::lockedSine(frames, 440, kRate, 1, 0.5);
    return test::rawSamples({kRate, {channels, sine}},
                            candidateGrid(kRate, static_cast<std::int64_t>(channels), 0)[1]);
  }
  std::filesystem::path file(const Bytes& bytes) const { return folder.write("take.raw", bytes); }

  test::TemporaryDirectory folder;
};

TEST_F(RawPCMProposal, RanksTheFileAsItIsWhenNothingInItIsSilent) {
  auto bytes = tone(24 * 1000);
  bytes.insert(bytes.begin(), 7, std::byte{9});
  const auto found = propose(file(bytes), {kRate, {1}, 7}, 0.2);
  EXPECT_FALSE(found.isSilent);
  EXPECT_EQ(found.candidates, rank(file(bytes), candidateGrid(kRate, 1, 7), 0.2));
}

TEST_F(RawPCMProposal, CutsSilenceWhereverItIs) {
  const auto sound = tone(24 * 500);
  const auto expected = propose(file(sound), {kRate, {1}, 0}, 10).candidates;
  EXPECT_EQ(expected.at(0).format.formatToken(), "s16le");
  const auto half = static_cast<std::ptrdiff_t>(sound.size() / 2);
  for (const std::byte silence : {std::byte{0}, std::byte{0x80}})
    for (const std::ptrdiff_t place : {std::ptrdiff_t{0}, half}) {
      Bytes bytes = sound;
      bytes.insert(bytes.begin() + place, 24 * 40'000, silence);
      EXPECT_EQ(propose(file(bytes), {kRate, {1}, 0}, 10).candidates, expected);
    }
}

TEST_F(RawPCMProposal, KeepsTheFramesOfEveryChannelCountWhole) {
  const auto sound = tone(12 * 24 * 100, 2);
  Bytes late(2 * 5 + 4 * 12345);  // a header, and silence that ends in the middle of a unit
  late.insert(late.end(), sound.begin(), sound.end());
  const auto best = propose(file(late), {kRate, {1, 2, 4, 6, 8}, 10}, 10).candidates.at(0);
  EXPECT_EQ(best.format.formatToken(), "s16le");
  EXPECT_EQ(best.format.headerSkipBytes, 10);
  EXPECT_GT(best.score, 0.99F);
}

TEST_F(RawPCMProposal, ProposesOnlyWhatFitsTheWholeFile) {
  const auto found = propose(file(Bytes(1002, std::byte{1})), {kRate, {2}, 0}, 1);
  std::multiset<std::string> tokens;
  for (const auto& candidate : found.candidates) tokens.insert(candidate.format.formatToken());
  EXPECT_EQ(tokens, (std::multiset<std::string>{"u8", "s24le", "s24be"}));
  EXPECT_TRUE(propose(file(Bytes(1001)), {kRate, {2}, 0}, 1).candidates.empty());
  EXPECT_TRUE(propose(file(Bytes(10)), {kRate, {1}, 10}, 1).candidates.empty());
}

TEST_F(RawPCMProposal, SaysWhenAllIsSilent) {
  EXPECT_TRUE(propose(file(Bytes(24'000)), {kRate, {1}, 0}, 1).isSilent);
  EXPECT_FALSE(propose(file(Bytes(8)), {kRate, {1}, 0}, 1).isSilent) << "too few to tell";
  EXPECT_EQ(propose(file(Bytes(24'000)), {kRate, {1}, 0}, 1).candidates,
            rank(file(Bytes(24'000)), candidateGrid(kRate, 1, 0), 1));
}

TEST_F(RawPCMProposal, PassesOverNoMoreThanItsLimit) {
  const auto path = file({});
  const auto limit = static_cast<std::uintmax_t>(RawPCMGuesser::kLongestSilence);
  std::filesystem::resize_file(path, limit + (std::uintmax_t{1} << 20));  // a hole: zeros
  std::ofstream stream(path, std::ios::in | std::ios::binary | std::ios::ate);
  const auto sound = tone(24'000);
  stream.write(reinterpret_cast<const char*>(sound.data()),
               static_cast<std::streamsize>(sound.size()));
  stream.close();
  EXPECT_TRUE(propose(path, {kRate, {1}, 0}, 1).isSilent);
  EXPECT_FALSE(propose(path, {kRate, {1}, 2 << 20}, 1).isSilent);
}

TEST_F(RawPCMProposal, ShowsPreviewsUnderTheFormatsThatItProposes) {
  std::mutex mutex;
  std::vector<RawPCMFormat> shown;
  const auto note = [&](const RawPCMFormat& format, const PCMBuffer&) {
    const std::lock_guard lock(mutex);
    shown.push_back(format);
  };
  auto bytes = tone(24'000);
  bytes.resize(bytes.size() + 24);
  const auto found =
      propose(file(bytes), {kRate, {1, 2}, 24}, 0.1, {.threadCount = 2, .onPreview = note});
  ASSERT_EQ(shown.size(), found.candidates.size());
  for (const auto& candidate : found.candidates)
    EXPECT_EQ(std::count(shown.begin(), shown.end(), candidate.format), 1);
}

TEST_F(RawPCMProposal, TellsNothingWithoutAPreview) {
  const auto found = propose(file(tone(24'000)), {kRate, {1}, 0}, 0);
  EXPECT_FALSE(found.isSilent);
  ASSERT_EQ(found.candidates.size(), 13U);
  for (const auto& candidate : found.candidates) EXPECT_EQ(candidate.score, -1);
}

TEST_F(RawPCMProposal, FailsForWhatCannotBeRead) {
  EXPECT_THROW(propose(folder / "missing", {kRate, {1}, 0}, 1), PlatformError);
  EXPECT_THROW(propose(folder.path(), {kRate, {1}, 0}, 1), PlatformError);
}

TEST(RawPCMProposalDeathTest, NeedsChannelCountsThatGoTogether) {
  const test::TemporaryDirectory folder;
  const auto file = folder.write("take.raw", Bytes(48));
  EXPECT_DEATH((void)propose(file, {kRate, {1, 0}, 0}, 1), "common multiple");
  EXPECT_DEATH((void)propose(file, {kRate, {1, 61, 59, 53}, 0}, 1), "common multiple");
}

}  // namespace
}  // namespace orvane
