#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace orvane::cli {

/// A place in audio, or a length of it: a time, or a number of frames.
struct EditTime {
  bool isFrames = false;
  std::int64_t frames = 0;
  double seconds = 0;  ///< unless it is frames

  /// From "62.5", "62.5s", "500ms", "1:02.5", "1:02:03" or "#48000". Throws `UsageError`, which
  /// names `what` it was to be.
  static EditTime parse(std::string_view text, const std::string& what);

  /// The nearest frame.
  std::int64_t frameAt(double sampleRate) const;
  double secondsAt(double sampleRate) const;
};

/// Throws `UsageError` where the times alone show that nothing lies between them.
void requireOrder(const EditTime& start, const EditTime& end);

/// Under which a help text shows how an edit is done.
inline constexpr const char* kEditGroup = "Edit";

/// An option of a time.
CLI::Option* addTimeOption(CLI::App& command, const std::string& name, const std::string& text,
                           std::function<void(EditTime)> set);

}  // namespace orvane::cli
