#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/text/text_list_error.h"

namespace orvane {

/// What readers of lists in text files share.
namespace TextList {

/// Without the byte-order mark of UTF-8 at its start, if there is one.
ORVANE_TESTING_API std::string_view withoutByteOrderMark(std::string_view text) noexcept;

/// The text as UTF-8 when it begins with a byte-order mark of UTF-16, else as it stands. What is no
/// character becomes U+FFFD.
ORVANE_TESTING_API std::string asUTF8(std::string_view text);

/// Without blanks and tabs at its ends.
ORVANE_TESTING_API std::string_view trimmed(std::string_view text) noexcept;

/// In quotation marks, and no more of it than it takes to be recognised.
ORVANE_TESTING_API std::string quoted(std::string_view text);

/// Takes the next line off the front of `text`, without its end of either kind.
ORVANE_TESTING_API std::string_view takeLine(std::string_view& text) noexcept;

/// Whether a spreadsheet takes a cell for a formula.
ORVANE_API bool startsLikeFormula(std::string_view cell) noexcept;

/// The same, were it not for the apostrophes before it.
ORVANE_TESTING_API bool looksLikeFormula(std::string_view cell) noexcept;

/// A cell without the apostrophe that kept it from being taken for a formula.
ORVANE_TESTING_API std::string unguarded(std::string cell);

/// A cell as comma-separated values hold it (RFC 4180): in quotes where it needs them, or always.
ORVANE_API std::string csvCell(std::string_view cell);
ORVANE_TESTING_API std::string csvQuoted(std::string_view cell);

struct Cell {
  std::string text{};
  bool isQuoted = false;
};

struct Record {
  std::size_t line = 0;
  std::vector<Cell> cells{};

  bool isEmpty() const { return cells.size() == 1 && cells[0].text.empty() && !cells[0].isQuoted; }
};

/// Takes comma-separated values apart as RFC 4180 says, with either line end. Throws
/// `TextListError`.
class ORVANE_API CSVReader {
 public:
  explicit CSVReader(std::string_view text) : text_(text) {}

  /// Absent at the end.
  std::optional<Record> next();

 private:
  bool isAtEnd() const { return position_ == text_.size(); }
  bool isAtLineEnd() const;
  Cell readCell(std::size_t recordLine);
  Cell readQuoted(std::size_t recordLine);

  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;
};

/// Which cell of a header has one of these names, in lower case; absent when none has.
ORVANE_TESTING_API std::optional<std::size_t> columnNamed(
    const Record& header, const std::vector<std::string_view>& names);

}  // namespace TextList
}  // namespace orvane
