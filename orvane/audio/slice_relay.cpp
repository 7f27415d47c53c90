#include "orvane/audio/slice_relay.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "orvane/platform/parallel.h"
#include "orvane/platform/precondition.h"

namespace orvane {
namespace {

/// One is read while two are taken: by the fastest taker and by those that lag behind.
constexpr std::size_t kMostSlices = 3;

class SliceRelay {
 public:
  SliceRelay(AudioSource& source, std::uint32_t frames, const Execution& execution,
             std::span<const SliceTaker> takers)
      : source_(source), frames_(frames), execution_(execution) {
    precondition(!takers.empty(), "slices that nobody takes would stay for ever");
    for (const SliceTaker& take : takers) lanes_.push_back({.take = &take});
    unused_.reserve(kMostSlices);
  }

  /// On every thread.
  void work() {
    try {
      relay();
    } catch (...) {
      const std::lock_guard lock(mutex_);
      hasFailed_ = true;
      changed_.notifyAll();
      throw;
    }
  }

 private:
  struct Slice {
    std::shared_ptr<PCMBuffer> buffer{};
    std::size_t takersLeft = 0;
  };
  struct Lane {
    const SliceTaker* take = nullptr;
    std::size_t taken = 0;  ///< slices
    bool isBusy = false;
  };

  bool isOver() const { return hasFailed_ || (hasEnded_ && slices_.empty()); }
  bool mayRead() const { return !isReading_ && !hasEnded_ && slices_.size() < kMostSlices; }
  Lane* readyLane() {
    Lane* ready = nullptr;
    for (Lane& lane : lanes_)
      if (!lane.isBusy && lane.taken < gone_ + slices_.size() &&
          (ready == nullptr || lane.taken < ready->taken))
        ready = &lane;
    return ready;
  }

  void relay() {
    std::unique_lock lock(mutex_);
    while (!isOver()) {
      // Reading is what the others wait for, and slices are what is left to do while its last part
      // is still at work; a single thread takes what it has read first.
      if (isReading_ && changed_.help(lock)) continue;
      if (Lane* const lane = execution_.threadCount > 1 && mayRead() ? nullptr : readyLane())
        take(*lane, lock);
      else if (mayRead())
        read(lock);
      else
        changed_.wait(lock);
    }
  }

  /// Does something without the lock, with all others told of it afterwards.
  template <typename Work>
  void unlocked(std::unique_lock<std::mutex>& lock, Work&& work) {
    lock.unlock();
    work();
    lock.lock();
    changed_.notifyAll();
  }

  void read(std::unique_lock<std::mutex>& lock) {
    isReading_ = true;
    std::shared_ptr<PCMBuffer> buffer;
    if (!unused_.empty()) {
      buffer = std::move(unused_.back());
      unused_.pop_back();
    }
    unlocked(lock, [&] {
      if (!buffer) buffer = source_.makeBuffer(frames_, execution_.buffers);
      source_.read(*buffer);
    });
    isReading_ = false;
    hasEnded_ = buffer->frameLength() < frames_;
    if (buffer->frameLength() > 0) slices_.push_back({std::move(buffer), lanes_.size()});
  }

  void take(Lane& lane, std::unique_lock<std::mutex>& lock) {
    lane.isBusy = true;
    const PlanarView slice = slices_[lane.taken - gone_].buffer->view();
    unlocked(lock, [&] { (*lane.take)(slice); });
    lane.isBusy = false;
    --slices_[lane.taken++ - gone_].takersLeft;
    while (!slices_.empty() && slices_.front().takersLeft == 0) {
      unused_.push_back(std::move(slices_.front().buffer));
      slices_.pop_front();
      ++gone_;
    }
  }

  AudioSource& source_;
  std::uint32_t frames_;
  const Execution& execution_;
  std::mutex mutex_{};
  HelpfulCondition changed_{};
  std::vector<Lane> lanes_{};
  std::deque<Slice> slices_{};  ///< that not all have taken
  std::size_t gone_ = 0;        ///< slices before those
  std::vector<std::shared_ptr<PCMBuffer>> unused_{};
  bool isReading_ = false;
  bool hasEnded_ = false;
  bool hasFailed_ = false;
};

}  // namespace

void relaySlices(AudioSource& source, std::uint32_t frames, const Execution& execution,
                 std::span<const SliceTaker> takers) {
  SliceRelay relay(source, frames, execution, takers);
  const std::size_t threads = std::max<std::size_t>(execution.threadCount, 1);
  parallelFor(threads, threads, [&](std::size_t) { relay.work(); });
}

}  // namespace orvane
