#include "cli/options/edit_time.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "cli/usage_error.h"
#include "orvane/text/number_text.h"
#include "orvane/text/time_text.h"

namespace orvane::cli {
namespace {

/// Beyond any file, and so far from the end of 64 bits that sums stay within them.
constexpr std::int64_t kMostFrames = std::int64_t{1} << 48;

bool takeSuffix(std::string_view& text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

}  // namespace

EditTime EditTime::parse(std::string_view text, const std::string& what) {
  std::string_view rest = text;
  if (rest.starts_with('#')) {
    const auto frames = NumberText::parsed<std::int64_t>(rest.substr(1));
    if (frames && *frames >= 0) return {.isFrames = true, .frames = std::min(*frames, kMostFrames)};
  } else {
    const double unit = takeSuffix(rest, "ms") ? 1000 : 1;
    const bool hasUnit = rest.size() < text.size() || takeSuffix(rest, "s");
    const auto seconds = secondsFromTimeText(rest);
    if (seconds && !(hasUnit && rest.find(':') != std::string_view::npos))
      return {.seconds = *seconds / unit};
  }
  throw UsageError(what + ": '" + std::string(text) +
                   "' is no time; times are seconds, [h:]mm:ss[.fff] or #FRAME");
}

std::int64_t EditTime::frameAt(double sampleRate) const {
  if (isFrames) return frames;
  const double place = seconds * sampleRate;
  return place < static_cast<double>(kMostFrames) ? std::llround(place) : kMostFrames;
}

double EditTime::secondsAt(double sampleRate) const {
  return isFrames ? static_cast<double>(frames) / sampleRate : seconds;
}

void requireOrder(const EditTime& start, const EditTime& end) {
  if (start.isFrames == end.isFrames &&
      (start.isFrames ? end.frames <= start.frames : end.seconds <= start.seconds))
    throw UsageError("the end does not lie behind the start");
}

CLI::Option* addTimeOption(CLI::App& command, const std::string& name, const std::string& text,
                           std::function<void(EditTime)> set) {
  return command
      .add_option_function<std::string>(
          name,
          [name, set = std::move(set)](const std::string& value) {
            set(EditTime::parse(value, name));
          },
          text)
      ->option_text("TIME")
      ->group(kEditGroup);
}

}  // namespace orvane::cli
