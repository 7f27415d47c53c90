// How much memory a detection takes beside the samples it is given.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <fstream>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "orvane/speech/detector/speech_detection.h"
#include "orvane/speech/detector/vad_manager.h"
#include "tests/speech/detector/speech_test_support.h"
#include "tests/support/sanitized.h"

namespace orvane {
namespace {

constexpr std::size_t kMiB = std::size_t{1} << 20;

/// Resident bytes of this process that are backed by no file.
std::size_t anonymousBytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("RssAnon:")) return std::stoul(line.substr(8)) * 1024;
  throw std::runtime_error("the kernel tells no RssAnon");
}

/// Watches the process's memory while it lives.
class MemoryPeak {
 public:
  MemoryPeak() : before_(anonymousBytes()), watcher_([this] { watch(); }) {}

  std::size_t growth() {
    watcher_.request_stop();
    watcher_.join();
    return peak_ - std::min(peak_, before_);
  }

 private:
  void watch() {
    while (!watcher_.get_stop_token().stop_requested()) {
      peak_ = std::max(peak_, anonymousBytes());
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  std::size_t before_;
  std::size_t peak_ = 0;
  std::jthread watcher_;
};

TEST(DetectionMemory, WatcherSeesWhatIsAllocated) {
  if (test::isSanitized()) GTEST_SKIP() << "the memory is not the program's alone";
  MemoryPeak peak;
  std::vector<char> block(32 * kMiB, 'x');
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(block[kMiB], 'x');
  EXPECT_GT(peak.growth(), 31 * kMiB);
}

TEST(DetectionMemory, AnHourTakesLessThan16MiBBesideItsSamples) {
  if (test::isSanitized()) GTEST_SKIP() << "the memory is not the program's alone";
  std::vector<float> samples(std::size_t{3600} * 16000);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<float>(i % 2741) / 5000 - 0.25F;
  MemoryPeak peak;
  VadManager manager({}, test::currentModel());
  manager.segmentSpeech(samples, VadSegmentationConfig::defaults(), {.threadCount = 2});
  EXPECT_LT(peak.growth(), 16 * kMiB);
}

TEST(DetectionMemory, AnHourInPiecesTakesLessThan32MiB) {
  if (test::isSanitized()) GTEST_SKIP() << "the memory is not the program's alone";
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  const std::vector<float> piece(kPiece, 0.1F);
  const float* const channel = piece.data();
  MemoryPeak peak;
  SpeechDetection detection(VadManager({}, test::currentModel()), {}, 48000, 1);
  for (std::size_t frames = 0; frames < std::size_t{3600} * 48000; frames += kPiece) {
    detection.process({{&channel, 1}, kPiece}, 2);
  }
  EXPECT_TRUE(detection.finish());
  EXPECT_LT(peak.growth(), 32 * kMiB);
}

}  // namespace
}  // namespace orvane
