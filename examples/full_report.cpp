// full_report AUDIO CHAPTERS   writes a report as a web page to standard output: the figures of the
// file, the first half minute as a selection, its loud moments, and each chapter of a list.
#include <fstream>
#include <iostream>
#include <sstream>

#include "orvane/audio/chapter_list.h"
#include "orvane/platform/error.h"
#include "orvane/report/html/html_report_builder.h"
#include "orvane/report/report_parts.h"

namespace {

std::string report(const std::string& audio, const std::string& chapterList) {
  namespace analysis = orvane::OfflineAnalysisPipeline;
  analysis::AnalysisDetail detail;
  const auto result = analysis::analyzeFile(audio,
                                            {.enableSileroVAD = true,
                                             .computeStereoWidth = true,
                                             .vadTuning = orvane::SileroVADTuning::defaults(),
                                             .rawFormat = {}},
                                            {.execution = {.threadCount = 2}}, &detail);
  orvane::ReportParts parts{.selection = {{.startSeconds = 0, .endSeconds = 30}},
                            .maxMomentaryLUFS = -12};
  const auto format = orvane::ChapterList::formatOf(chapterList);
  parts.chapterMarks = orvane::ChapterList::read(chapterList, format);
  parts.chapterOrigin = orvane::ChapterList::origin(format);
  const auto gathered = orvane::gatherReport(result, detail, parts, "1.0");
  return orvane::HTMLReportBuilder::build(orvane::OrvaneReport::build(gathered.inputs, {}));
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 3) return 2;
  std::ostringstream chapters;
  chapters << std::ifstream(arguments[2]).rdbuf();
  try {
    std::cout << report(arguments[1], chapters.str());
  } catch (const orvane::Error& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
