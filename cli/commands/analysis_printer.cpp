#include "cli/commands/analysis_printer.h"

#include <cstdint>
#include <utility>

#include "cli/output/analysis_json.h"
#include "cli/output/analysis_table.h"
#include "cli/output/number_text.h"
#include "cli/terminal/terminal_text.h"

namespace orvane::cli {

PrintedResult AnalysisPrinter::prepare(const MeasuredFile& file, std::string report) const {
  PrintedResult result{.summary = rows_.row(file)};
  if (plan_.enforced)
    result.targets = TargetFindings::enforce(*file.report, *plan_.enforced, file.name.shown());
  if (plan_.layout == ResultLayout::json) {
    result.text = analysisJson(file, plan_.curves);
    return result;
  }
  if (plan_.layout == ResultLayout::blocks) {
    result.text = AnalysisTable::block(file, console_);
    return result;
  }
  result.text = plan_.layout == ResultLayout::report ? std::move(report) : result.summary;
  for (const auto& warning : file.warnings())
    result.warnings.push_back(file.name.shown() + ": " + warning);
  return result;
}

void AnalysisPrinter::print(const PrintedResult& file) {
  for (const auto& warning : file.warnings) console_.warning(warning);
  std::string text = file.text;
  if (plan_.layout == ResultLayout::rows && files_ == 0) text = rows_.titles() + text;
  if (plan_.layout == ResultLayout::blocks && files_ > 0) text = "\n" + text;
  console_.print(text);
  code_ = worse(code_, file.targets.tell(console_));
  summary_ += file.summary;
  ++files_;
}

void AnalysisPrinter::finish(const AlbumMeasurement* album, const BatchClosing& closing) {
  if (plan_.layout == ResultLayout::blocks && files_ > 1)
    console_.print("\n" + rows_.titles() + summary_);
  if (album != nullptr && album->fileCount() > 0) printAlbum(*album);
  if (!closing.isOfSeveral()) return;
  if (plan_.layout == ResultLayout::blocks) {
    std::string text = "\n";
    for (const auto& line : closing.lines()) text += TerminalText::escaped(line) + "\n";
    console_.print(text);
  } else if (plan_.layout == ResultLayout::rows) {
    for (const auto& line : closing.lines()) console_.note(line);
  }
}

void AnalysisPrinter::printAlbum(const AlbumMeasurement& album) {
  const auto count = NumberText::counted(static_cast<std::int64_t>(album.fileCount()), "file");
  const MeasuredFile file{.name = {{}, "Album of " + count}, .result = album.figures()};
  if (plan_.layout == ResultLayout::json)
    console_.print(albumJson(file, album.fileCount()));
  else if (plan_.layout != ResultLayout::report)
    console_.print((files_ > 1 || plan_.layout == ResultLayout::rows ? "" : "\n" + rows_.titles()) +
                   rows_.row(file));
}

}  // namespace orvane::cli
