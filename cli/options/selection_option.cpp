#include "cli/options/selection_option.h"

#include <string>

#include "cli/usage_error.h"
#include "orvane/text/time_text.h"

namespace orvane::cli::SelectionOption {
namespace {

double timeIn(std::string_view text) {
  if (const auto seconds = secondsFromTimeText(text)) return *seconds;
  throw UsageError("--selection: '" + std::string(text) +
                   "' is no time; times are seconds or [h:]mm:ss[.fff]");
}

}  // namespace

ReportParts::Selection parse(std::string_view text) {
  const auto dash = text.find('-');
  if (dash == std::string_view::npos || dash == 0)
    throw UsageError("--selection takes START-END, as in 90-120 or 1:30-2:00, not '" +
                     std::string(text) + "'");
  ReportParts::Selection selection{.startSeconds = timeIn(text.substr(0, dash))};
  const auto end = text.substr(dash + 1);
  if (!end.empty()) selection.endSeconds = timeIn(end);
  if (selection.endSeconds && !(selection.startSeconds < *selection.endSeconds))
    throw UsageError("--selection: the end does not lie behind the start");
  return selection;
}

}  // namespace orvane::cli::SelectionOption
