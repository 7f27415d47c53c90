#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Text from outside (file names above all) made fit for a terminal.
namespace orvane::cli::TerminalText {

/// The text in one harmless line: control characters, marks that change the direction of writing,
/// invisible characters and bytes that are no UTF-8 appear as escapes ("\n", "\x1B", "\u202E").
std::string escaped(std::string_view text);

/// The same for a text of many lines with tabs, which stay; lines end by LF alone.
std::string escapedLines(std::string_view text);

/// Columns that valid UTF-8 takes on a terminal: wide characters take two, combining ones none.
std::size_t width(std::string_view text);

/// The text if it fits into `columns`, else its two ends with "…" between them.
std::string shortened(std::string_view text, std::size_t columns);

/// The text broken at spaces into lines of at most `columns`; line ends in it are kept.
std::string wrapped(const std::string& text, std::size_t columns);

}  // namespace orvane::cli::TerminalText
