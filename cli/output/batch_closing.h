#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/options/file_list.h"

namespace orvane::cli {

/// What the last lines of a batch tell: how many files there were, which failed, and how far apart
/// in loudness the others lie.
class BatchClosing {
 public:
  void addMeasured(const InputName& file, float integratedLUFS);
  /// One that an earlier run has measured.
  void addKept(const InputName& file, float integratedLUFS);
  void addFailed(const InputName& file) { failed_.push_back(file.shown()); }
  /// One that was found in a folder.
  void addNoAudio() { ++noAudio_; }

  bool isOfSeveral() const noexcept { return measured_ + kept_ + noAudio_ + failed_.size() > 1; }

  /// "3 files measured, 1 failed, 2 no audio"; names are not escaped.
  std::vector<std::string> lines() const;

 private:
  struct Extreme {
    std::string name{};
    float integratedLUFS = 0;
  };

  void compare(const InputName& file, float integratedLUFS);

  std::size_t measured_ = 0;
  std::size_t kept_ = 0;
  std::size_t noAudio_ = 0;
  std::vector<std::string> failed_{};
  std::vector<Extreme>
      extremes_{};  ///< the loudest and the quietest, of those that have a loudness
};

}  // namespace orvane::cli
