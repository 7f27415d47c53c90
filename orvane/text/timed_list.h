#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"

/// Lists of stretches of time with names, in the forms that several programs exchange.
namespace orvane::TimedList {

/// One entry as it is written: no time is read yet. What the list does not give is absent.
struct Entry {
  std::size_t line = 0;
  std::string start{};
  std::optional<std::string> end{};
  std::optional<std::string> name{};
};

/// The names, in lower case, by which a header tells which column holds what.
struct ColumnNames {
  std::vector<std::string_view> start{};
  std::vector<std::string_view> end{};
  std::vector<std::string_view> name{};
  bool needsEnd = false;
};

using Take = std::function<void(Entry)>;

/// Gives the entries of comma-separated values to `take`, one after another. Columns are found by
/// the names of the header; without a header they are start, end and name. Empty lines are passed
/// over. Names come without the apostrophe that guards what looks like a formula; a name that is
/// empty and has no quotes is absent. Throws `TextListError`.
ORVANE_TESTING_API void readCSV(std::string_view text, const ColumnNames& names, const Take& take);

/// The same for the lines of a label track of the audio editor Audacity: start, end and name with
/// tabs between. Empty lines and those of frequency ranges, which begin with a backslash, are
/// passed over.
ORVANE_TESTING_API void readAudacityLabels(std::string_view text, const Take& take);

}  // namespace orvane::TimedList
