#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/output/summary_row.h"
#include "orvane/platform/appended_file.h"

namespace orvane::cli {

/// The summary of a batch. Every row is in the file as soon as it is added, so that whatever ends
/// the run leaves those that were finished.
class SummaryFile {
 public:
  enum class Existing { refuse, replace, resume };

  /// What an earlier run found of a file that is as it was.
  struct Finished {
    float integratedLUFS = 0;
    std::vector<std::string> verdicts{};  ///< in a word, a target each
  };

  /// Finds out whether the file can be begun, or what an earlier run left of it; its rows of
  /// `inputs` that failed or have changed since are dropped. Throws `PlatformError` for a file that
  /// exists, cannot be written or has other columns.
  SummaryFile(const std::filesystem::path& path, Existing existing,
              std::vector<std::string> columns, std::span<const InputName> inputs);

  /// Before the first row. Throws `PlatformError`.
  void begin();

  /// Absent for a file that is to be measured.
  std::optional<Finished> finished(const InputName& input) const;

  /// May be called by one thread at a time. Throws `PlatformError`.
  void add(std::vector<std::string> cells);

  /// Puts the rows into the order of the inputs, those of other files last. Throws likewise.
  void finish();

 private:
  using Row = std::vector<std::string>;

  void takeOver(std::span<const InputName> inputs);
  void writeRows();

  std::filesystem::path path_;
  std::vector<std::string> columns_;
  std::map<std::string, std::size_t> places_{};  ///< of the inputs, by what the rows call them
  std::map<std::string, std::size_t> kept_{};    ///< in `rows_`, likewise
  std::vector<Row> rows_{};                      ///< held only when some were kept
  std::optional<AppendedFile> file_{};
};

}  // namespace orvane::cli
