// What a damaged file measures must not depend on whether its audio is kept.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/audio/audio_source_reader.h"
#include "orvane/platform/error.h"
#include "tests/analysis/same_figures.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/random.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using OfflineAnalysisPipeline::AnalysisDetail;
using OfflineAnalysisPipeline::analyzeFile;
using OfflineAnalysisPipeline::Options;
using OfflineAnalysisPipeline::Result;

struct EncodedFile {
  std::string name;
  test::Arguments arguments{};
};

std::ostream& operator<<(std::ostream& out, const EncodedFile& file) {
  return out << file.name;
}

/// A measurement, or the sentence with which there is none.
struct Outcome {
  Result result{};
  AnalysisDetail detail{};
  std::string failure{};
};

Outcome outcomeOf(const std::filesystem::path& file, bool keepsBuffer) {
  const Options options{.enableSileroVAD = false,
                        .computeStereoWidth = true,
                        .vadTuning = SileroVADTuning::defaults(),
                        .rawFormat = {}};
  Outcome outcome;
  try {
    outcome.result =
        analyzeFile(file, options, {.execution = {.threadCount = 2}, .keepsBuffer = keepsBuffer},
                    &outcome.detail);
  } catch (const Error& error) {
    outcome.failure = error.errorDescription();
  }
  return outcome;
}

std::string damaged(const std::string& whole, int kind, test::Random& random) {
  std::string bytes = whole;
  const std::size_t place = random.below(whole.size());
  switch (kind) {
    case 0:  // cut short
      return whole.substr(0, place);
    case 1:
      bytes[place] = static_cast<char>(bytes[place] ^ static_cast<char>(1U << random.below(8)));
      return bytes;
    case 2:  // a hole
      for (std::size_t i = place; i < std::min(place + 64, bytes.size()); ++i) bytes[i] = 0;
      return bytes;
    case 3:  // something behind it
      return bytes + static_cast<char>(random.next());
    default:
      return whole + whole;
  }
}

class DamagedFileFigures : public testing::TestWithParam<EncodedFile> {};

TEST_P(DamagedFileFigures, AreTheSameWithoutKeepingTheAudio) {
  constexpr int kKinds = 5;
  constexpr int kRounds = 4;
  const test::TemporaryDirectory folder;
  const auto& [name, arguments] = GetParam();
  const std::string whole = test::readFile(test::encodeNoise(folder, name, arguments, 1.5));
  test::Random random(20251122);
  int measured = 0;
  for (int round = 0; round < kRounds; ++round)
    for (int kind = 0; kind < kKinds; ++kind) {
      SCOPED_TRACE(std::to_string(round) + ", kind " + std::to_string(kind));
      const auto file = test::writeFile(folder / "damaged.bin", damaged(whole, kind, random));
      const Outcome kept = outcomeOf(file, true);
      const Outcome passed = outcomeOf(file, false);
      EXPECT_EQ(kept.failure, passed.failure);
      test::expectSameFigures(kept.result, passed.result);
      EXPECT_EQ(kept.detail.blockPowers, passed.detail.blockPowers);
      EXPECT_EQ(kept.detail.clippingRuns, passed.detail.clippingRuns);
      EXPECT_EQ(kept.detail.layout, passed.detail.layout);
      EXPECT_EQ(kept.detail.warnings, passed.detail.warnings);
      if (kept.failure.empty()) ++measured;
    }
  EXPECT_GE(measured, kRounds);
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, DamagedFileFigures,
                         testing::Values(EncodedFile{"a.flac", {"-ac", "2"}}, EncodedFile{"a.mp3"},
                                         EncodedFile{"a.aac"}, EncodedFile{"a.m4a"},
                                         EncodedFile{"alac.m4a", {"-c:a", "alac"}},
                                         EncodedFile{"a.ogg"}, EncodedFile{"a.opus"},
                                         EncodedFile{"a.ac3"}, EncodedFile{"a.wv"}),
                         [](const auto& tested) { return test::wordOf(tested.param.name); });

}  // namespace
}  // namespace orvane
