#include "cli/commands/analysis_batch.h"

#include <filesystem>
#include <utility>

#include "cli/output/output_file.h"

namespace orvane::cli {

AnalysisBatch::AnalysisBatch(Plan plan, std::vector<InputName>& files) : plan_(std::move(plan)) {
  if (plan_.summaryFile.empty()) return;
  const std::filesystem::path path = plan_.summaryFile;
  std::erase_if(files, [&path](const InputName& file) {
    std::error_code ignored;
    return file.isFound && std::filesystem::equivalent(file.path, path, ignored);
  });
  ReadFiles read;
  for (const InputName& file : files) read.add(file.path);
  read.requireNone(path);
  summary_.emplace(path, plan_.existing, SummaryRow::columns(plan_.targetIDs), files);
  std::erase_if(files, [this](const InputName& file) {
    const auto finished = summary_->finished(file);
    if (!finished) return false;
    closing_.addKept(file, finished->integratedLUFS);
    kept_.emplace_back(file, *finished);
    return true;
  });
}

ExitCode AnalysisBatch::enforceKept(const std::optional<TargetFindings::Demand>& demand,
                                    Console& console) const {
  ExitCode code = ExitCode::done;
  if (!demand) return code;
  for (const auto& [file, row] : kept_)
    code = worse(code,
                 TargetFindings::enforceKept(plan_.targetIDs, row.verdicts, *demand, file.shown())
                     .tell(console));
  return code;
}

void AnalysisBatch::begin() {
  if (summary_) summary_->begin();
}

SummaryRow::Version AnalysisBatch::versionOf(const InputName& file) const {
  return summary_ ? SummaryRow::versionOf(file) : SummaryRow::Version{};
}

AnalysisBatch::Entry AnalysisBatch::entry(const SummaryRow::Version& version,
                                          std::shared_ptr<const MeasuredFile> file) const {
  Entry entry{.name = file->name, .integratedLUFS = file->result.integratedLUFS};
  if (summary_) entry.cells = SummaryRow::ofMeasured(version, *file, plan_.targetIDs);
  if (plan_.album) entry.file = std::move(file);
  return entry;
}

void AnalysisBatch::add(Entry entry) {
  closing_.addMeasured(entry.name, entry.integratedLUFS);
  if (summary_) summary_->add(std::move(entry.cells));
  if (entry.file) album_.add(entry.file->result, entry.file->detail);
}

void AnalysisBatch::addFailure(const InputName& file, const std::string& message) {
  closing_.addFailed(file);
  if (summary_) summary_->add(SummaryRow::ofFailure(SummaryRow::versionOf(file), message));
}

void AnalysisBatch::finish() {
  if (summary_) summary_->finish();
}

}  // namespace orvane::cli
