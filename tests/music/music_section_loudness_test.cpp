#include "orvane/music/music_section_loudness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <vector>

namespace orvane {
namespace {

using TimeSpan = MusicAnalysisResult::TimeSpan;

constexpr double kStep = 0.1;
// One logarithm and its inverse on levels around 20: a few eps of 32-bit numbers.
constexpr double kRounding = 1e-5;

double power(double lufs) {
  return std::pow(10, (lufs + 0.691) / 10);
}

struct Programme {
  std::vector<double> blocks{};
  std::vector<TimeSpan> sections{};
};

/// Sections of 10 s, each at its level; nothing at all for an absent one.
Programme programme(const std::vector<std::optional<double>>& levels) {
  Programme result;
  for (const auto& level : levels) {
    const double start = static_cast<double>(result.sections.size()) * 10;
    result.sections.push_back({start, start + 10});
    result.blocks.insert(result.blocks.end(), 100, level ? power(*level) : 0.0);
  }
  return result;
}

std::optional<MusicSectionLoudness> compute(const Programme& piece) {
  return MusicSectionLoudness::compute(piece.blocks, kStep, piece.sections);
}

TEST(MusicSectionLoudness, MeasuresEachSectionAgainstTheMedian) {
  const auto result = compute(programme({-10, -12, -14, std::nullopt}));
  ASSERT_TRUE(result);
  ASSERT_EQ(result->entries.size(), 4U);
  EXPECT_NEAR(result->medianLUFS.value(), -12, kRounding);
  const double deviations[] = {2, 0, -2};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(result->entries[i].index, static_cast<std::int64_t>(i));
    EXPECT_NEAR(result->entries[i].deviationLU.value(), deviations[i], kRounding);
  }
  EXPECT_EQ(result->entries[3].integratedLUFS, std::nullopt);
  EXPECT_EQ(result->entries[3].deviationLU, std::nullopt);
  EXPECT_EQ(result->entries[3].span, (TimeSpan{30, 40}));
}

TEST(MusicSectionLoudness, TakesTheMeanOfTheTwoMiddleValues) {
  EXPECT_NEAR(compute(programme({-10, -12, -14, -16}))->medianLUFS.value(), -13, kRounding);
}

TEST(MusicSectionLoudness, KeepsTheEntryOfASectionThatIsTooShort) {
  const std::vector<double> blocks(100, power(-20));
  const std::vector<TimeSpan> sections{{0, 2.9}, {0, 3.0}};
  const auto result = MusicSectionLoudness::compute(blocks, kStep, sections);
  ASSERT_EQ(result->entries.size(), 2U);
  EXPECT_EQ(result->entries[0].integratedLUFS, std::nullopt);
  EXPECT_EQ(result->entries[0].deviationLU, std::nullopt);
  EXPECT_EQ(result->entries[0].span, sections[0]);
  EXPECT_NEAR(result->entries[1].integratedLUFS.value(), -20, kRounding);
}

TEST(MusicSectionLoudness, FindsTheLoudestAndTheQuietestSection) {
  const auto result = compute(programme({-14, std::nullopt, -10, -18, -10, -18}));
  ASSERT_NE(result->loudest(), nullptr);
  EXPECT_EQ(result->loudest()->index, 2);
  EXPECT_EQ(result->quietest()->index, 3);
}

TEST(MusicSectionLoudness, HasNeitherMedianNorExtremesWithoutAnyValue) {
  const auto result = compute(programme({std::nullopt, std::nullopt}));
  ASSERT_TRUE(result);
  EXPECT_EQ(result->medianLUFS, std::nullopt);
  EXPECT_EQ(result->loudest(), nullptr);
  EXPECT_EQ(result->quietest(), nullptr);
}

TEST(MusicSectionLoudness, IsNoneWithoutBlocksOrSections) {
  const auto piece = programme({-10});
  EXPECT_EQ(MusicSectionLoudness::compute({}, kStep, piece.sections), std::nullopt);
  EXPECT_EQ(MusicSectionLoudness::compute(piece.blocks, kStep, {}), std::nullopt);
}

}  // namespace
}  // namespace orvane
