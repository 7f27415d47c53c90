#include "orvane/audio/slice_relay.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "orvane/platform/parallel.h"
#include "orvane/platform/progress.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

constexpr RawPCMFormat kFormat{
    .sampleRate = 8000, .channelCount = 1, .encoding = RawPCMFormat::Encoding::uint8};

/// A file whose samples count from 0 to 255, over and over.
class SliceRelayTest : public testing::Test {
 protected:
  std::unique_ptr<AudioSource> source(std::size_t frames) const {
    std::string bytes(frames, '\0');
    for (std::size_t i = 0; i < frames; ++i) bytes[i] = static_cast<char>(i);
    test::writeFile(folder_ / "take.raw", bytes);
    return AudioSource::open(folder_ / "take.raw", kFormat);
  }

  /// Looks at every slice after some time, and counts the frames that follow each other.
  struct Counter {
    std::size_t frames = 0;
    std::size_t slices = 0;
    std::chrono::microseconds pause{};

    void take(PlanarView slice) {
      std::this_thread::sleep_for(pause);
      for (std::size_t i = 0; i < slice.frameCount(); ++i, ++frames)
        EXPECT_EQ(slice.channel(0)[i], (static_cast<float>(frames % 256) - 128.0F) / 128.0F);
      ++slices;
    }
  };

  test::TemporaryDirectory folder_;
};

TEST_F(SliceRelayTest, GivesAllSlicesInOrderToEachTaker) {
  for (const std::size_t threads : {0U, 1U, 2U, 3U, 8U})
    for (const std::size_t frames : {1U, 99U, 100U, 101U, 1000U, 1234U}) {
      SCOPED_TRACE(testing::Message() << threads << " threads, " << frames << " frames");
      std::vector<Counter> counters(3);
      counters[1].pause = std::chrono::microseconds(300);
      std::vector<SliceTaker> takers;
      for (Counter& counter : counters)
        takers.emplace_back([&](PlanarView slice) { counter.take(slice); });
      relaySlices(*source(frames), 100, {.threadCount = threads}, takers);
      for (const Counter& counter : counters) {
        EXPECT_EQ(counter.frames, frames);
        EXPECT_EQ(counter.slices, (frames + 99) / 100);
      }
    }
}

TEST_F(SliceRelayTest, WhoWaitsHelpsTheTakers) {
  // Each of the two tasks waits for the other, so that one thread alone would not get on.
  std::mutex mutex;
  std::condition_variable changed;
  std::size_t come = 0;
  std::size_t slices = 0;
  const SliceTaker take = [&](PlanarView) {
    ++slices;
    parallelFor(2, 2, [&](std::size_t) {
      std::unique_lock lock(mutex);
      ++come;
      changed.notify_all();
      EXPECT_TRUE(changed.wait_for(lock, std::chrono::minutes(1),
                                   [&, all = 2 * slices] { return come >= all; }));
    });
  };
  relaySlices(*source(5000), 100, {.threadCount = 2}, {&take, 1});
  EXPECT_EQ(slices, 50U);
}

TEST_F(SliceRelayTest, KeepsFewSlicesAndASingleThreadOne) {
  for (const std::size_t threads : {1U, 4U}) {
    PCMBufferPool pool;
    std::set<const float*> places;
    std::mutex mutex;
    const SliceTaker take = [&](PlanarView slice) {
      const std::lock_guard lock(mutex);
      places.insert(slice.channel(0));
    };
    const std::vector<SliceTaker> takers{take, take};
    relaySlices(*source(5000), 100, {.threadCount = threads, .buffers = &pool}, takers);
    EXPECT_LE(places.size(), threads == 1 ? 1U : 3U);
  }
}

TEST_F(SliceRelayTest, PassesOnWhatIsThrown) {
  for (const std::size_t threads : {1U, 2U, 8U}) {
    std::atomic<int> slices = 0;
    const std::vector<SliceTaker> takers{[](PlanarView) {},
                                         [&](PlanarView) {
                                           if (++slices == 3) throw std::runtime_error("enough");
                                         }};
    EXPECT_THROW(relaySlices(*source(5000), 100, {.threadCount = threads}, takers),
                 std::runtime_error);
    EXPECT_EQ(slices, 3);
  }
}

TEST_F(SliceRelayTest, PassesOnWhatReadingThrows) {
  const auto cut = source(5000);
  std::filesystem::resize_file(folder_ / "take.raw", 2000);
  const std::vector<SliceTaker> takers{[](PlanarView) {}};
  EXPECT_ANY_THROW(relaySlices(*cut, 100, {.threadCount = 2}, takers));
}

}  // namespace
}  // namespace orvane
