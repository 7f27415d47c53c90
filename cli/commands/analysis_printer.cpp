#include "cli/commands/analysis_printer.h"

#include <utility>

#include "cli/output/analysis_json.h"
#include "cli/output/analysis_table.h"

namespace orvane::cli {

PrintedResult AnalysisPrinter::prepare(const MeasuredFile& file, std::string report) const {
  PrintedResult result{.summary = AnalysisTable::row(file, console_)};
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
  if (plan_.layout == ResultLayout::rows && files_ == 0)
    text = AnalysisTable::rowTitles(console_) + text;
  if (plan_.layout == ResultLayout::blocks && files_ > 0) text = "\n" + text;
  console_.print(text);
  code_ = worse(code_, file.targets.tell(console_));
  summary_ += file.summary;
  ++files_;
}

void AnalysisPrinter::finish() {
  if (plan_.layout == ResultLayout::blocks && files_ > 1)
    console_.print("\n" + AnalysisTable::rowTitles(console_) + summary_);
}

}  // namespace orvane::cli
