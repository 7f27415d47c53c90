// A sidecar that is being saved is the old or the new one, whole, whenever the process dies.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <random>
#include <thread>

#include "orvane/speech/dialogue/dialogue_sidecar_io.h"
#include "tests/speech/dialogue/dialogue_samples.h"
#include "tests/support/faulty_saving.h"
#include "tests/support/in_child.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

/// Every region carries the number of its save, so that a mixture would show.
DialogueSidecar numbered(int number) {
  std::vector<DialogueRegion> regions;
  for (int i = 0; i < 50 + 400 * (number % 3); ++i)
    regions.emplace_back(UUID{}, i, i + 0.5, "save " + std::to_string(number));
  auto sidecar = test::sidecarWith(std::move(regions));
  sidecar.generator = std::to_string(number);
  return sidecar;
}

class DialogueSidecarFaultTest : public testing::Test {
 protected:
  /// The number of the save that stands there; it must be one of them, whole.
  int savedNumber() const {
    const auto sidecar = DialogueSidecarIO::loadForAudio(audio);
    if (!sidecar) throw std::runtime_error("the sidecar is gone");
    const int number = std::stoi(sidecar->generator);
    EXPECT_EQ(sidecar, numbered(number));
    return number;
  }
  void removeLeftovers() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      if (entry.path().filename().string().starts_with(".take1.wav.dlg.orvane-save-"))
        std::filesystem::remove(entry.path());
  }

  test::TemporaryDirectory folder;
  std::filesystem::path audio = folder / "take1.wav";
};

TEST_F(DialogueSidecarFaultTest, IsWholeAfterAKillAtAnyMoment) {
  // Kills fall into the time that a child needs to start and to save three times.
  const auto begin = std::chrono::steady_clock::now();
  test::runInChild([&] {
    for (const int number : {1, 2, 0}) DialogueSidecarIO::saveForAudio(numbered(number), audio);
    return 0;
  });
  const std::chrono::duration<double, std::micro> threeSaves =
      std::chrono::steady_clock::now() - begin;
  std::mt19937 random(20240229);
  std::uniform_real_distribution<double> microseconds(0, std::max(threeSaves.count(), 1000.0));
  int last = 0;
  // On a busy machine many a child dies before its first save.
  for (int round = 0; round < 100 || last < 20; ++round) {
    ASSERT_LT(round, 5000) << "the saves are too slow for the test to mean anything";
    const pid_t child = test::startInChild([&] {
      for (int number = last + 1;; ++number)
        DialogueSidecarIO::saveForAudio(numbered(number), audio);
      return 0;
    });
    std::this_thread::sleep_for(std::chrono::duration<double, std::micro>(microseconds(random)));
    ASSERT_EQ(kill(child, SIGKILL), 0);
    EXPECT_EQ(test::waitFor(child).signal, SIGKILL);
    const int number = savedNumber();
    EXPECT_GE(number, last) << "an older sidecar came back";
    last = number;
    removeLeftovers();
  }
}

TEST_F(DialogueSidecarFaultTest, IsWholeAfterAnyFaultOfTheSystem) {
  DialogueSidecarIO::saveForAudio(numbered(1), audio);
  const test::FaultySaving saving(DialogueSidecarIO::sidecarURL(audio),
                                  test::FaultySaving::ofOperation([&] {
                                    DialogueSidecarIO::saveForAudio(numbered(2), audio);
                                  }));
  for (const bool anonymous : {true, false}) {
    saving.killAtEveryCall({.anonymous = anonymous});
    saving.failEveryCall({ENOSPC}, {.anonymous = anonymous});
  }
}

}  // namespace
}  // namespace orvane
