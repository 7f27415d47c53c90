#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "cli/terminal/console.h"
#include "orvane/platform/progress.h"

namespace orvane::cli {

/// The status line of long work on one or many files. Draws at most ten times a second, nothing in
/// the first moment, and nothing at all unless the console shows a status.
class ProgressBar {
 public:
  /// Not shown at all when `isWanted` is false; interruption is asked for all the same.
  ProgressBar(Console& console, std::size_t fileCount, bool isWanted);
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// Watches the work on one file; also passes a request to interrupt on to it.
  std::unique_ptr<ProgressObserver> forFile(std::string_view name);

  /// Counts one more file as done.
  void fileDone();

  /// The line for a state, for example " 3/12  Measuring  [####------]  41.5 %  song.wav".
  static std::string line(std::size_t done, std::size_t fileCount, std::string_view stage,
                          double fraction, std::string_view name);

 private:
  friend class FileProgress;
  void show(std::string_view stage, double fraction, std::string_view name);

  Console& console_;
  std::size_t fileCount_;
  bool isWanted_;
  std::mutex mutex_{};
  std::size_t done_ = 0;
  std::chrono::steady_clock::time_point nextDrawing_;
};

}  // namespace orvane::cli
