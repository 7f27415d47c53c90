#include "cli/output/summary_row.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>

#include "cli/output/number_text.h"
#include "cli/output/target_findings.h"
#include "cli/terminal/terminal_text.h"
#include "orvane/analysis/programme_summary.h"
#include "orvane/platform/file_stamp.h"
#include "orvane/text/iso8601_date.h"
#include "orvane/text/text_list.h"
#include "orvane/text/utf8.h"

namespace orvane::cli::SummaryRow {
namespace {

constexpr std::array kFileColumns = {"path",
                                     "fileSize",
                                     "modified",
                                     "error",
                                     "integratedLUFS",
                                     "loudnessRange",
                                     "truePeakDB",
                                     "samplePeakDB",
                                     "maxMomentaryLUFS",
                                     "maxShortTermLUFS",
                                     "dynamicRange",
                                     "speechGatedLUFS",
                                     "speechPercentage",
                                     "averageCorrelation",
                                     "lowestCorrelation",
                                     "durationSeconds",
                                     "fileFormat",
                                     "encodingName",
                                     "bitDepth",
                                     "sampleRate",
                                     "channelCount",
                                     "dualMono",
                                     "channelLabels",
                                     "channelPeakDB",
                                     "channelRMSDB",
                                     "channelCrestFactorDB",
                                     "channelDCOffset",
                                     "clippingRunCount",
                                     "nonFiniteSampleCount",
                                     "warnings"};

/// The digits that a number of 32 bits has.
std::string number(float value) {
  std::array<char, 32> digits{};
  return {digits.data(), std::to_chars(digits.begin(), digits.end(), value).ptr};
}

std::string joined(const std::vector<std::string>& texts) {
  std::string result;
  for (const auto& text : texts) result += (result.empty() ? "" : "|") + text;
  return result;
}

std::string joined(const std::vector<float>& numbers) {
  std::vector<std::string> texts;
  for (const float each : numbers) texts.push_back(number(each));
  return joined(texts);
}

std::string dateText(std::int64_t nanoseconds) {
  const std::chrono::sys_time<std::chrono::nanoseconds> moment{
      std::chrono::nanoseconds(nanoseconds)};
  const auto second = std::chrono::floor<std::chrono::seconds>(moment);
  if (!ISO8601Date::hasText(second)) return "";
  constexpr std::size_t kDigits = 9;
  std::string text = ISO8601Date::text(second);
  return text.insert(text.size() - 1, "." + NumberText::padded((moment - second).count(), kDigits));
}

/// With bytes that are no UTF-8 as "\xFF", and so begun that no spreadsheet takes it for a formula.
std::string pathText(const std::string& name) {
  std::string text;
  for (std::string_view rest = name; !rest.empty();) {
    const auto first = firstUTF8Character(rest);
    text += first.isWellFormed ? std::string(rest.substr(0, first.length))
                               : TerminalText::escaped(rest.substr(0, 1));
    rest.remove_prefix(first.length);
  }
  return TextList::startsLikeFormula(text) && text != "-" ? "./" + text : text;
}

void addTargets(std::vector<std::string>& cells, const MeasuredFile& file,
                std::span<const std::string> targetIDs) {
  for (const auto& id : targetIDs) {
    const auto verdict = TargetFindings::of(file.report, id);
    const auto distance = verdict ? TargetFindings::deltaLU(*verdict) : std::nullopt;
    cells.push_back(verdict ? TargetFindings::word(*verdict) : "");
    cells.push_back(distance ? number(*distance) : "");
  }
}

}  // namespace

Version versionOf(const InputName& file) {
  Version version{.path = pathText(file.display) +
                          (file.stream ? " [stream " + std::to_string(*file.stream) + "]" : "")};
  const auto stamp = file.isStandardInput() ? std::nullopt : FileStamp::of(file.path);
  if (!stamp) return version;
  version.size = std::to_string(stamp->size);
  version.modified = dateText(stamp->modified);
  return version;
}

std::vector<std::string> columns(std::span<const std::string> targetIDs) {
  std::vector<std::string> names(kFileColumns.begin(), kFileColumns.end());
  for (const auto& id : targetIDs) names.insert(names.end(), {id + ".verdict", id + ".deltaLU"});
  return names;
}

std::vector<std::string> verdicts(std::span<const std::string> cells) {
  std::vector<std::string> words;
  for (std::size_t i = kFileColumns.size(); i < cells.size(); i += 2) words.push_back(cells[i]);
  return words;
}

std::vector<std::string> ofMeasured(const Version& version, const MeasuredFile& file,
                                    std::span<const std::string> targetIDs) {
  const auto& result = file.result;
  const auto correlation = audibleCorrelation(result);
  const auto ofSpeech = [&result](float value) {
    return result.speechHistory ? number(value) : std::string();
  };
  std::vector<std::string> cells = {version.path,
                                    version.size,
                                    version.modified,
                                    "",
                                    number(result.integratedLUFS),
                                    number(result.loudnessRange),
                                    number(result.truePeakDB),
                                    number(result.samplePeakDB),
                                    number(result.maxMomentaryLUFS),
                                    number(result.maxShortTermLUFS),
                                    std::to_string(result.dynamicRange),
                                    ofSpeech(result.speechGatedLUFS),
                                    ofSpeech(result.speechPercentage),
                                    correlation ? number(correlation->mean) : "",
                                    correlation ? number(correlation->lowest) : "",
                                    NumberText::shortest(result.durationSeconds),
                                    result.fileFormat,
                                    file.encodingText(),
                                    std::to_string(result.bitDepth),
                                    NumberText::shortest(result.sampleRate),
                                    std::to_string(result.channelCount),
                                    file.detail.isDualMono ? "true" : "false",
                                    joined(file.channelNames()),
                                    joined(result.channelPeakDB),
                                    joined(result.channelRMSDB),
                                    joined(result.channelCrestFactorDB),
                                    joined(result.channelDCOffset),
                                    std::to_string(file.detail.clippingRunCount),
                                    std::to_string(file.detail.nonFiniteSampleCount),
                                    joined(file.warnings())};
  addTargets(cells, file, targetIDs);
  return cells;
}

std::vector<std::string> ofFailure(const Version& version, const std::string& message) {
  return {version.path, version.size, version.modified, pathText(message)};
}

std::string line(std::span<const std::string> cells) {
  std::string text;
  for (const auto& cell : cells)
    text += (&cell == cells.data() ? "" : ",") + TextList::csvCell(cell);
  return text + "\n";
}

}  // namespace orvane::cli::SummaryRow
