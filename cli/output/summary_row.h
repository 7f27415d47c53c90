#pragma once

#include <span>
#include <string>
#include <vector>

#include "cli/commands/measured_file.h"

namespace orvane::cli {

/// A row per file of a batch, for spreadsheets and scripts (RFC 4180, UTF-8, lines end in "\n").
/// Figures are called as in JSON; lists of them stand in one cell, with "|" between. For each
/// target there is a verdict and how far the level lies above the target's own.
namespace SummaryRow {

/// By which a file is known again.
struct Version {
  std::string path{};      ///< as the user typed it; bytes that are no UTF-8 appear as escapes
  std::string size{};      ///< bytes; empty when unknown
  std::string modified{};  ///< UTC, with nanoseconds; empty when unknown

  bool operator==(const Version&) const = default;
};

/// Of a file as it is now; without size and date for standard input and what cannot be looked at.
Version versionOf(const InputName& file);

/// Where the columns that are read again stand.
enum Column : std::size_t { path, size, modified, error, integrated };

std::vector<std::string> columns(std::span<const std::string> targetIDs);

/// The words of the verdicts in a row, a target each.
std::vector<std::string> verdicts(std::span<const std::string> cells);

/// As many cells as there are columns, or fewer.
std::vector<std::string> ofMeasured(const Version& version, const MeasuredFile& file,
                                    std::span<const std::string> targetIDs);
std::vector<std::string> ofFailure(const Version& version, const std::string& message);

/// The cells in one line, with its end.
std::string line(std::span<const std::string> cells);

}  // namespace SummaryRow
}  // namespace orvane::cli
