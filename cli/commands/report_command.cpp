#include "cli/commands/report_command.h"

#include <memory>
#include <string>
#include <vector>

#include "cli/options/text_input.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/report_outputs.h"
#include "cli/usage_error.h"
#include "orvane/platform/error.h"
#include "orvane/report/orvane_report.h"

namespace orvane::cli {
namespace {

struct ReportOptions {
  std::string record{};
  ReportOutputOptions outputs{};
};

OrvaneReport readRecord(const std::string& name) {
  try {
    return decodeJSON<OrvaneReport>(readTextInput(name));
  } catch (const DecodingError& error) {
    throw PlatformError(shownTextInput(name), error.errorDescription());
  }
}

ExitCode runReport(const ReportOptions& options, Console& console) {
  if (!options.outputs.isAny())
    throw UsageError("nothing to write; --html, --csv and --pdf say what");
  const std::vector<InputName> inputs = {{options.record, options.record}};
  ReportOutputs outputs(options.outputs, inputs, {});
  warnOfAbandonedFiles(outputs.files(), console);
  std::vector<std::string> warnings;
  const auto text = outputs.write(0, readRecord(options.record), warnings);
  for (const auto& warning : warnings)
    console.warning(shownTextInput(options.record) + ": " + warning);
  console.print(text);
  return ExitCode::done;
}

}  // namespace

void addReportCommand(CLI::App& program, ChosenCommand& chosen) {
  auto options = std::make_shared<ReportOptions>();
  CLI::App* command =
      program.add_subcommand("report", "Render a record of \"analyze --report\" again");
  command->add_option("REPORT", options->record, "The record; - is standard input")->required();
  addReportFileOptions(*command, options->outputs);
  addReportForceOption(*command, options->outputs);
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runReport(*options, console); };
  });
}

}  // namespace orvane::cli
