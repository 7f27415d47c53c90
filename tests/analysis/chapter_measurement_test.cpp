#include "orvane/analysis/chapter_measurement.h"

#include <gtest/gtest.h>

#include <limits>

#include "orvane/platform/error.h"
#include "tests/analysis/raw_programme.h"

namespace orvane {
namespace {

using ChapterMeasurement::medianLUFS;
using ChapterMeasurement::spansOf;
using ChapterMeasurement::spansOfSections;
using SelectionMeasurement::ChapterSpan;
using Spans = std::vector<ChapterSpan>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(ChapterSpans, LastUntilTheNextMarkAndTheEndOfTheFile) {
  EXPECT_EQ(spansOf({{0, {}, "One"}, {10, {}, "Two"}}, 25),
            (Spans{{1, "One", 0, 10}, {2, "Two", 10, 25}}));
}

TEST(ChapterSpans, KeepTheEndsThatMarksHave) {
  EXPECT_EQ(spansOf({{1, 5, "A"}, {4, 30, "B"}}, 25), (Spans{{1, "A", 1, 5}, {2, "B", 4, 25}}));
}

TEST(ChapterSpans, AreInTheOrderOfTheirStarts) {
  EXPECT_EQ(spansOf({{10, {}, "Two"}, {0, {}, "One"}}, 25),
            (Spans{{1, "One", 0, 10}, {2, "Two", 10, 25}}));
}

TEST(ChapterSpans, LeaveOutWhatHasNoLengthInTheFile) {
  EXPECT_EQ(
      spansOf({{5, 5, "empty"}, {25, {}, "at the end"}, {99, {}, "behind"}, {kNaN, {}, "x"}}, 25),
      Spans{});
  EXPECT_EQ(spansOf({{3, {}, "first"}, {3, {}, "second"}}, 25), (Spans{{1, "second", 3, 25}}));
  EXPECT_EQ(spansOf({}, 25), Spans{});
  EXPECT_EQ(spansOf({{0, {}, "x"}}, 0), Spans{});
}

TEST(ChapterSpans, AreMissingForTheMarksThatAreToldWithoutAudio) {
  const std::vector<ChapterMark> marks = {
      {99, {}, "behind"}, {0, {}, "One"}, {5, 5, "empty"}, {7, 40, "cut"}, {25, {}, "at the end"}};
  EXPECT_EQ(ChapterMeasurement::withoutAudio(marks, 25),
            (std::vector<ChapterMark>{marks[2], marks[4], marks[0]}));
  EXPECT_EQ(spansOf(marks, 25), (Spans{{1, "One", 0, 5}, {2, "cut", 7, 25}}));
}

TEST(ChapterSpans, WithoutANameAreNumbered) {
  EXPECT_EQ(spansOf({{0, {}, ""}, {1, {}, "x"}, {2, {}, ""}}, 3),
            (Spans{{1, "Chapter 1", 0, 1}, {2, "x", 1, 2}, {3, "Chapter 3", 2, 3}}));
}

TEST(ChapterSpans, OfSectionsCoverTheFile) {
  using Section = MusicAnalysisResult::TimeSpan;
  const std::vector<Section> sections = {{0, 40}, {40, 42}, {42, 175}, {175, 180}};
  EXPECT_EQ(spansOfSections(sections, 180),
            (Spans{{1, "Section 1", 0, 40}, {2, "Section 2", 40, 180}}));
  EXPECT_EQ(spansOfSections({}, 180), Spans{});
}

std::vector<core::Chapter> withLoudness(const std::vector<std::optional<float>>& values) {
  std::vector<core::Chapter> chapters;
  for (const auto& value : values) chapters.push_back({.integratedLUFS = value});
  return chapters;
}

TEST(ChapterMedian, IsTheMiddleOneOrTheMeanOfTheTwoMiddleOnes) {
  EXPECT_EQ(medianLUFS(withLoudness({-10, -14, -12})), -12.0F);
  EXPECT_EQ(medianLUFS(withLoudness({-10, -16, -12, -14})), -13.0F);
  EXPECT_EQ(medianLUFS(withLoudness({-10, std::nullopt, -12, -14})), -12.0F);
}

TEST(ChapterMedian, IsAbsentWithoutAnyLoudness) {
  const float silence = -std::numeric_limits<float>::infinity();
  EXPECT_EQ(medianLUFS(withLoudness({std::nullopt, silence})), std::nullopt);
  EXPECT_EQ(medianLUFS({}), std::nullopt);
}

/// Notes what it is told, and cancels when asked to.
class Watcher : public ProgressObserver {
 public:
  explicit Watcher(bool cancels = false) : cancels_(cancels) {}
  void onProgress(std::string_view stage, double fraction) override {
    EXPECT_EQ(stage, "Chapters");
    EXPECT_GE(fraction, last);
    EXPECT_LE(fraction, 1);
    last = fraction;
  }
  bool isCancelled() override { return cancels_; }

  double last = 0;

 private:
  bool cancels_;
};

TEST(ChapterMeasurementTest, MeasuresEachChapterAndTellsOfAllTogether) {
  constexpr std::size_t kRate = 8000;
  auto samples = test::sine(kRate, 997, 0.1, 20 * kRate);
  const auto quiet = test::sine(kRate, 997, 0.01, 20 * kRate);
  samples.insert(samples.end(), quiet.begin(), quiet.end());
  const auto file = test::RawProgramme(kRate, {samples}).analyze();
  const Spans spans = {{1, "loud", 0, 20}, {2, "quiet", 20, 40}};
  Watcher watcher;
  const auto chapters =
      ChapterMeasurement::measure(*file.buffer, spans, std::nullopt, {.observer = &watcher});
  ASSERT_EQ(chapters.size(), 2U);
  EXPECT_EQ(chapters[0].name, "loud");
  EXPECT_NEAR(*chapters[0].integratedLUFS - *chapters[1].integratedLUFS, 20, 0.01);
  EXPECT_EQ(watcher.last, 1);
  Watcher canceller(true);
  EXPECT_THROW(
      ChapterMeasurement::measure(*file.buffer, spans, std::nullopt, {.observer = &canceller}),
      Cancelled);
}

}  // namespace
}  // namespace orvane
