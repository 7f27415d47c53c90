#include "cli/terminal/progress_bar.h"

#include <gtest/gtest.h>

namespace orvane::cli {
namespace {

TEST(ProgressBar, ShowsStageShareAndName) {
  EXPECT_EQ(ProgressBar::line(0, 1, "Measuring", 0.5, "song.wav"),
            "Measuring  [############------------]  50.0 %  song.wav");
}

TEST(ProgressBar, CountsTheFilesOfABatch) {
  EXPECT_EQ(ProgressBar::line(8, 120, "Reading", 0.004, "song.wav"),
            "  9/120  Reading    [------------------------]   0.4 %  song.wav");
}

TEST(ProgressBar, StaysWithinItsBounds) {
  EXPECT_EQ(ProgressBar::line(0, 1, "Measuring", 1.5, "x"),
            "Measuring  [########################] 100.0 %  x");
  EXPECT_EQ(ProgressBar::line(0, 1, "Measuring", -1, "x"),
            "Measuring  [------------------------]   0.0 %  x");
}

TEST(ProgressBar, LetsWorkGoOnWhileNobodyInterrupts) {
  Console console(ConsoleTraits{});
  ProgressBar bar(console, 1, true);
  const auto observer = bar.forFile("song.wav");
  observer->onProgress("Reading", 0.5);
  EXPECT_FALSE(observer->isCancelled());
}

}  // namespace
}  // namespace orvane::cli
