#include "cli/commands/report_command.h"

#include <memory>
#include <string>
#include <vector>

#include "cli/options/target_options.h"
#include "cli/options/text_input.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/report_outputs.h"
#include "cli/output/target_findings.h"
#include "cli/terminal/terminal_text.h"
#include "cli/usage_error.h"
#include "orvane/platform/error.h"
#include "orvane/report/orvane_report.h"
#include "orvane/report/target_verdicts.h"

namespace orvane::cli {
namespace {

struct ReportOptions {
  std::string record{};
  ReportOutputOptions outputs{};
  TargetOptions targets{};
  bool json = false;
};

OrvaneReport readRecord(const std::string& name) {
  try {
    return decodeJSON<OrvaneReport>(readTextInput(name));
  } catch (const DecodingError& error) {
    throw PlatformError(shownTextInput(name), error.errorDescription());
  }
}

/// Prints how the report stands to its targets.
ExitCode tellVerdicts(const OrvaneReport& report, const ReportOptions& options, bool isPrinted,
                      Console& console) {
  const std::string name = shownTextInput(options.record);
  if (isPrinted && options.json) {
    console.print(TargetFindings::json(report, options.record));
  } else if (isPrinted) {
    console.print(console.styled(Style::bold, TerminalText::escaped(name)) + "\n" +
                  TargetFindings::table(report, console));
  }
  const auto demand = options.targets.enforced();
  return demand ? TargetFindings::enforce(report, *demand, name).tell(console) : ExitCode::done;
}

ExitCode runReport(ReportOptions options, Console& console) {
  const bool isJudged = options.targets.areRequested();
  if (!options.outputs.isAny() && !isJudged)
    throw UsageError("nothing to do; --html, --csv and --pdf write it, --targets judges it");
  if (options.json && !isJudged)
    throw UsageError("--json needs --targets, --mode or --target-file");
  options.targets.settle();
  const std::vector<InputName> inputs = {{options.record, options.record}};
  ReportOutputs outputs(options.outputs, inputs, options.targets.filesRead());
  if (outputs.takeStandardOutput() && options.json)
    throw UsageError("--json and a report cannot both go to standard output");
  warnOfAbandonedFiles(outputs.files(), console);
  auto report = readRecord(options.record);
  if (isJudged) TargetVerdicts::judge(report, options.targets.selection());
  std::vector<std::string> warnings;
  const auto text = outputs.write(0, report, warnings);
  for (const auto& warning : warnings)
    console.warning(shownTextInput(options.record) + ": " + warning);
  console.print(text);
  if (!isJudged) return ExitCode::done;
  return tellVerdicts(report, options, !outputs.takeStandardOutput(), console);
}

}  // namespace

void completeReportCommand(CLI::App& command, ChosenCommand& chosen) {
  auto options = std::make_shared<ReportOptions>();
  command.add_option("REPORT", options->record, "The record; - is standard input")->required();
  addReportFileOptions(command, options->outputs);
  addReportForceOption(command, options->outputs);
  addTargetOptions(command, options->targets);
  command.add_flag("--json", options->json, "Print the verdicts as a JSON document")
      ->group("Output");
  command.callback([options, &chosen] {
    chosen = [options](Console& console) { return runReport(*options, console); };
  });
}

}  // namespace orvane::cli
