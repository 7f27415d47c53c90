// A sidecar that is being saved is the old or the new one, whole, whenever the process dies.

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

#include "orvane/platform/error.h"
#include "orvane/speech/dialogue_sidecar_io.h"
#include "tests/speech/dialogue_samples.h"
#include "tests/support/in_child.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

namespace faults = test::SystemCallFaults;

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
      if (entry.path().filename().string().starts_with(".orvane-"))
        std::filesystem::remove(entry.path());
  }

  test::TemporaryDirectory folder;
  std::filesystem::path audio = folder / "take1.wav";
};

TEST_F(DialogueSidecarFaultTest, IsWholeAfterAKillAtAnyMoment) {
  DialogueSidecarIO::saveForAudio(numbered(0), audio);
  std::mt19937 random(20240229);
  std::uniform_int_distribution<int> microseconds(500, 20'000);
  int last = 0;
  for (int round = 0; round < 150; ++round) {
    const pid_t child = test::startInChild([&] {
      for (int number = last + 1;; ++number)
        DialogueSidecarIO::saveForAudio(numbered(number), audio);
      return 0;
    });
    std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
    ASSERT_EQ(kill(child, SIGKILL), 0);
    EXPECT_EQ(test::waitFor(child).signal, SIGKILL);
    const int number = savedNumber();
    EXPECT_GE(number, last) << "an older sidecar came back";
    last = number;
    removeLeftovers();
  }
  EXPECT_GT(last, 20) << "the saves were too slow for the test to mean anything";
}

TEST_F(DialogueSidecarFaultTest, IsWholeAfterAKillBeforeAnySystemCall) {
  for (const bool anonymous : {true, false}) {
    bool isOver = false;
    for (std::size_t at = 0; !isOver; ++at) {
      DialogueSidecarIO::saveForAudio(numbered(1), audio);
      const auto end = test::runInChild([&] {
        faults::begin({.kind = faults::Kind::kill, .at = at, .anonymous = anonymous});
        DialogueSidecarIO::saveForAudio(numbered(2), audio);
        return 0;
      });
      isOver = end.exitCode == 0;
      EXPECT_TRUE(isOver || end.signal == SIGKILL);
      EXPECT_GE(savedNumber(), isOver ? 2 : 1);
      removeLeftovers();
    }
  }
}

TEST_F(DialogueSidecarFaultTest, IsTheOldOneWhenTheDiskIsFull) {
  DialogueSidecarIO::saveForAudio(numbered(1), audio);
  faults::begin({.kind = faults::Kind::failOnce, .at = 0, .code = ENOSPC, .only = "pwrite"});
  EXPECT_THROW(DialogueSidecarIO::saveForAudio(numbered(2), audio), PlatformError);
  faults::end();
  EXPECT_EQ(savedNumber(), 1);
}

}  // namespace
}  // namespace orvane
