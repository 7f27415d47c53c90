#include "cli/output/report_outputs.h"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <future>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/output/output_file.h"
#include "cli/output/source_date.h"
#include "cli/usage_error.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/error.h"
#include "orvane/report/pdf/pdf_report_renderer.h"

namespace orvane::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* kStandardOutput = "-";
constexpr const char* kGroup = "Reports";

/// One form for all names of a place; what cannot be resolved will not open either.
fs::path placeOf(const fs::path& path) {
  std::error_code failure;
  auto place = fs::weakly_canonical(fs::absolute(path), failure);
  return failure ? path.lexically_normal() : place;
}

void addFile(CLI::App& command, ReportOutputOptions& options, ReportFormat format,
             const std::string& description) {
  command
      .add_option_function<std::string>(
          "--" + std::string(rawValue(format)),
          [&options, format](const std::string& file) {
            if (file.empty())
              throw UsageError("--" + std::string(rawValue(format)) + " names no file");
            options.files[format] = file;
          },
          description)
      ->option_text("F")
      ->group(kGroup);
}

void setFormats(const std::string& list, std::vector<ReportFormat>& formats) {
  for (const auto& name : CLI::detail::split(list, ',')) {
    const auto format = reportFormatFromRawValue(name);
    if (!format)
      throw UsageError("--formats: unknown format '" + name +
                       "'; the formats are html, csv, pdf, report");
    if (std::find(formats.begin(), formats.end(), *format) == formats.end())
      formats.push_back(*format);
  }
}

void requireSense(const ReportOutputOptions& options, std::size_t inputCount) {
  if (options.formats.empty() != options.folder.empty())
    throw UsageError("--out and --formats go together");
  if (!options.files.empty() && inputCount > 1)
    throw UsageError("--" + std::string(rawValue(options.files.begin()->first)) +
                     " is for one FILE; --out DIR --formats LIST writes the reports of several");
  const auto isStandardOutput = [](const auto& file) { return file.second == kStandardOutput; };
  if (std::count_if(options.files.begin(), options.files.end(), isStandardOutput) > 1)
    throw UsageError("only one report can go to standard output");
  const auto pdf = options.files.find(ReportFormat::pdf);
  if (pdf != options.files.end() && isStandardOutput(*pdf) && ::isatty(STDOUT_FILENO) == 1)
    throw UsageError("PDF is nothing for a terminal; --pdf FILE writes it");
}

}  // namespace

void addReportFileOptions(CLI::App& command, ReportOutputOptions& options) {
  addFile(command, options, ReportFormat::html, "Write a web page; - is standard output");
  addFile(command, options, ReportFormat::pdf, "Write the same page as PDF; needs a browser");
  addFile(command, options, ReportFormat::csv, "Write a table for spreadsheets");
}

void addReportForceOption(CLI::App& command, ReportOutputOptions& options) {
  command.add_flag("--force", options.force, "Replace files that exist")->group(kGroup);
}

void addReportOutputOptions(CLI::App& command, ReportOutputOptions& options) {
  addReportFileOptions(command, options);
  addFile(command, options, ReportFormat::record,
          "Write the whole record, from which \"orvane report\" renders again");
  command
      .add_option("--out", options.folder,
                  "Write the reports of all files into DIR, named after them")
      ->option_text("DIR")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--formats", [&options](const std::string& list) { setFormats(list, options.formats); },
          "With --out: which reports, of html,csv,pdf,report")
      ->option_text("LIST")
      ->group(kGroup);
  addReportForceOption(command, options);
}

ReportOutputs::ReportOutputs(const ReportOutputOptions& options, std::span<const InputName> inputs,
                             std::span<const fs::path> otherFilesRead)
    : isAny_(options.isAny()),
      force_(options.force),
      renderer_(isAny_ ? sourceDate() : std::nullopt),
      outputs_(inputs.size()) {
  if (!isAny_) return;
  requireSense(options, inputs.size());
  for (const auto& [format, file] : options.files) {
    const bool isStandardOutput = file == kStandardOutput;
    takesStandardOutput_ = takesStandardOutput_ || isStandardOutput;
    outputs_.front().push_back(
        {format, isStandardOutput ? std::nullopt : std::optional<fs::path>(file)});
  }
  if (!options.folder.empty()) {
    const auto names = reportNames(inputs);
    for (std::size_t i = 0; i < inputs.size(); ++i)
      for (const ReportFormat format : options.formats)
        outputs_[i].push_back(
            {format, fs::path(options.folder) / (names[i] + std::string(fileSuffix(format)))});
    std::error_code failure;
    fs::create_directories(options.folder, failure);
    if (failure) throw PlatformError(options.folder, failure);
  }
  const bool needsBrowser = check(inputs, otherFilesRead);
  if (!needsBrowser) return;
  bootstrapAppKitForHeadlessRendering();
  renderer_.prepareForPDF();
}

bool ReportOutputs::check(std::span<const InputName> inputs,
                          std::span<const fs::path> otherFilesRead) const {
  ReadFiles read;
  for (const InputName& input : inputs) read.add(input.path);
  for (const fs::path& path : otherFilesRead) read.add(path);

  std::set<fs::path> known;
  bool needsBrowser = false;
  for (const auto& ofOneInput : outputs_) {
    for (const Output& output : ofOneInput) {
      needsBrowser = needsBrowser || output.format == ReportFormat::pdf;
      if (!output.path) continue;
      read.requireNone(*output.path);
      if (!known.insert(placeOf(*output.path)).second)
        throw UsageError("two reports would be written to '" + output.path->string() + "'");
      OutputFile::requireWritable(*output.path, force_);
    }
  }
  return needsBrowser;
}

std::vector<fs::path> ReportOutputs::files() const {
  std::vector<fs::path> paths;
  for (const auto& ofOneInput : outputs_)
    for (const Output& output : ofOneInput)
      if (output.path) paths.push_back(*output.path);
  return paths;
}

std::string ReportOutputs::write(std::size_t inputIndex, const OrvaneReport& report,
                                 std::vector<std::string>& warnings) {
  std::string forStandardOutput;
  const auto write = [&](const Output& output) {
    std::string content = renderer_.render(report, output.format, warnings);
    if (!output.path) {
      forStandardOutput = std::move(content);
      return;
    }
    AtomicFile file = OutputFile::open(*output.path, force_);
    file.write(content);
    file.commit();
  };
  // While the browser lays the PDF out, the others are made.
  std::vector<std::future<void>> pdfs;
  for (const Output& output : outputs_[inputIndex])
    if (output.format == ReportFormat::pdf) pdfs.push_back(std::async(write, std::cref(output)));
  for (const Output& output : outputs_[inputIndex])
    if (output.format != ReportFormat::pdf) write(output);
  for (auto& pdf : pdfs) pdf.get();
  return forStandardOutput;
}

}  // namespace orvane::cli
