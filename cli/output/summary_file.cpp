#include "cli/output/summary_file.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "cli/output/output_file.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/file_text.h"
#include "orvane/text/number_text.h"
#include "orvane/text/text_list.h"

namespace orvane::cli {
namespace {

/// Millions of rows; more is no summary.
constexpr std::uint64_t kLargestSummary = std::uint64_t{1} << 30;

/// The records up to the first that is none, where a run may have been stopped in mid-row.
std::vector<std::vector<std::string>> recordsIn(const std::string& text) {
  std::vector<std::vector<std::string>> records;
  TextList::CSVReader reader(text);
  try {
    while (const auto record = reader.next()) {
      auto& cells = records.emplace_back();
      for (const auto& cell : record->cells) cells.push_back(cell.text);
    }
  } catch (const TextListError&) {
  }
  return records;
}

}  // namespace

SummaryFile::SummaryFile(const std::filesystem::path& path, Existing existing,
                         std::vector<std::string> columns, std::span<const InputName> inputs)
    : path_(path), columns_(std::move(columns)) {
  std::error_code ignored;
  const bool resumes = existing == Existing::resume && std::filesystem::exists(path, ignored);
  OutputFile::requireWritable(path, existing == Existing::replace || resumes);
  if (resumes) takeOver(inputs);
}

void SummaryFile::begin() {
  writeRows();
  file_.emplace(path_);
}

void SummaryFile::takeOver(std::span<const InputName> inputs) {
  auto records = recordsIn(readFileText(path_, kLargestSummary));
  if (records.empty()) return;
  if (records.front() != columns_)
    throw PlatformError(path_,
                        "its columns are others; --resume goes on with a summary of the same "
                        "version and targets, --force begins it anew");
  std::map<std::string, SummaryRow::Version> versions;
  for (const InputName& input : inputs) {
    auto version = SummaryRow::versionOf(input);
    places_.emplace(version.path, places_.size());
    versions.emplace(version.path, std::move(version));
  }
  for (auto record = records.begin() + 1; record != records.end(); ++record) {
    if (record->size() != columns_.size()) continue;
    using SummaryRow::Column;
    const SummaryRow::Version then{.path = record->at(Column::path),
                                   .size = record->at(Column::size),
                                   .modified = record->at(Column::modified)};
    const auto now = versions.find(then.path);
    if (now != versions.end()) {
      if (now->second != then || then.size.empty() || !record->at(Column::error).empty()) continue;
      kept_.emplace(then.path, rows_.size());
    }
    rows_.push_back(std::move(*record));
  }
}

void SummaryFile::writeRows() {
  AtomicFile file(path_);
  std::string text = SummaryRow::line(columns_);
  for (const Row& row : rows_) text += SummaryRow::line(row);
  file.write(text);
  file.commit();
}

std::optional<SummaryFile::Finished> SummaryFile::finished(const InputName& input) const {
  const auto row = kept_.empty() ? kept_.end() : kept_.find(SummaryRow::versionOf(input).path);
  if (row == kept_.end()) return std::nullopt;
  const Row& cells = rows_[row->second];
  const auto& level = cells[SummaryRow::Column::integrated];
  return Finished{orvane::NumberText::parsed<float>(level).value_or(0),
                  SummaryRow::verdicts(cells)};
}

void SummaryFile::add(Row cells) {
  cells.resize(columns_.size());
  file_->append(SummaryRow::line(cells));
  if (!rows_.empty()) rows_.push_back(std::move(cells));
}

void SummaryFile::finish() {
  if (rows_.empty()) return;
  const auto place = [this](const Row& row) {
    const auto found = places_.find(row[SummaryRow::Column::path]);
    return found == places_.end() ? places_.size() : found->second;
  };
  if (std::ranges::is_sorted(rows_, {}, place)) return;
  std::ranges::stable_sort(rows_, {}, place);
  file_.reset();
  writeRows();
}

}  // namespace orvane::cli
