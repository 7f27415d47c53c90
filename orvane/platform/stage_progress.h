#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <string_view>

#include "orvane/platform/error.h"
#include "orvane/platform/progress.h"

namespace orvane {

/// Adds up the progress of the tasks of one stage and tells the observer, one call at a time.
class StageProgress {
 public:
  /// `total`: the sum of all amounts that will be passed to `advance`. `observer` may be null.
  StageProgress(ProgressObserver* observer, std::string_view stage, std::size_t total)
      : observer_(observer), stage_(stage), total_(std::max<std::size_t>(total, 1)) {}

  /// Some work is done. Throws `Cancelled` when the observer asks for it.
  void advance(std::size_t amount) {
    if (observer_ == nullptr) return;
    const std::lock_guard lock(mutex_);
    done_ += amount;
    if (observer_->isCancelled()) throw Cancelled();
    observer_->onProgress(stage_, static_cast<double>(done_) / static_cast<double>(total_));
  }

 private:
  ProgressObserver* observer_;
  std::string_view stage_;
  std::size_t total_;
  std::size_t done_ = 0;
  std::mutex mutex_;
};

}  // namespace orvane
