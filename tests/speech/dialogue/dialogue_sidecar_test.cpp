#include "orvane/speech/dialogue/dialogue_sidecar.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/speech/dialogue/dialogue_samples.h"

namespace orvane {
namespace {

TEST(DialogueSidecar, SortsRegionsByStartAndKeepsEqualOnesInTheirOrder) {
  const auto sidecar = test::sidecarWith(
      {{UUID::random(), 5, 6}, {UUID::random(), 1, 4, "first"}, {UUID::random(), 1, 2, "second"}});
  ASSERT_EQ(sidecar.regions.size(), 3U);
  EXPECT_EQ(sidecar.regions[0].start, 1.0);
  EXPECT_EQ(sidecar.regions[0].label, "first");
  EXPECT_EQ(sidecar.regions[1].start, 1.0);
  EXPECT_EQ(sidecar.regions[1].label, "second");
  EXPECT_EQ(sidecar.regions[2].start, 5.0);
}

TEST(DialogueSidecar, SortsWhatIsNoNumberLast) {
  std::vector<DialogueRegion> regions(40, {UUID{}, 0, 1});
  for (std::size_t i = 0; i < regions.size(); ++i)
    regions[i].start = i % 3 == 0 ? std::nan("") : -static_cast<double>(i);
  const auto sidecar = test::sidecarWith(regions);
  for (std::size_t i = 1; i < regions.size(); ++i)
    EXPECT_FALSE(
        sidecar.regions[i].start < sidecar.regions[i - 1].start ||
        (std::isnan(sidecar.regions[i - 1].start) && !std::isnan(sidecar.regions[i].start)));
}

TEST(DialogueSidecar, EqualityCoversEveryField) {
  const auto original = test::sampleSidecar();
  const auto differs = [&](auto change) {
    auto other = original;
    change(other);
    return !(other == original);
  };
  EXPECT_EQ(original, test::sampleSidecar());
  EXPECT_TRUE(differs([](auto& s) { s.schemaVersion = 0; }));
  EXPECT_TRUE(differs([](auto& s) { s.generator = ""; }));
  EXPECT_TRUE(differs([](auto& s) { s.generatorVersion = ""; }));
  EXPECT_TRUE(differs([](auto& s) { s.audioFile.filename = ""; }));
  EXPECT_TRUE(differs([](auto& s) { s.audioFile.durationSeconds = 0; }));
  EXPECT_TRUE(differs([](auto& s) { s.audioFile.sampleRate = 0; }));
  EXPECT_TRUE(differs([](auto& s) { s.regions.pop_back(); }));
  EXPECT_TRUE(differs([](auto& s) { s.createdAt += std::chrono::seconds(1); }));
  EXPECT_TRUE(differs([](auto& s) { s.modifiedAt += std::chrono::seconds(1); }));
  EXPECT_TRUE(differs([](auto& s) { s.source = DialogueRegionSource::imported; }));
}

}  // namespace
}  // namespace orvane
