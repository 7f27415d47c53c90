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

#include "orvane/speech/detector/vad_manager.h"
#include "tests/speech/detector/speech_test_support.h"
#include "tests/support/sanitized.h"

namespace orvane {
namespace {

#ifndef ORVANE_IS_SANITIZED
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
  MemoryPeak peak;
  std::vector<char> block(32 * kMiB, 'x');
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(block[kMiB], 'x');
  EXPECT_GT(peak.growth(), 31 * kMiB);
}

TEST(DetectionMemory, AnHourTakesLessThan16MiBBesideItsSamples) {
  std::vector<float> samples(std::size_t{3600} * 16000);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<float>(i % 2741) / 5000 - 0.25F;
  MemoryPeak peak;
  VadManager manager({}, test::currentModel());
  manager.segmentSpeech(samples, VadSegmentationConfig::defaults(), {.threadCount = 2});
  EXPECT_LT(peak.growth(), 16 * kMiB);
}
#endif

}  // namespace
}  // namespace orvane
