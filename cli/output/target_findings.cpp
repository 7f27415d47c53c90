#include "cli/output/target_findings.h"

#include <algorithm>

#include "cli/output/json_output.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/report/report_coding.h"

namespace orvane::cli::TargetFindings {
namespace {

namespace Evaluator = core::LoudnessTargetEvaluator;
using Alignment = TextTable::Alignment;

Style verdictStyle(std::string_view kind) {
  if (kind == "pass") return Style::green;
  if (kind == "normalize") return Style::yellow;
  return kind == "fail" ? Style::red : Style::plain;
}

std::string titled(const TargetVerdict& verdict) {
  return verdict.name + " (" + verdict.target.id + ")";
}

std::string missed(const TargetVerdict& verdict) {
  std::string sentence = "misses " + titled(verdict) + ": ";
  for (const auto& line : TargetVerdicts::lines(verdict)) {
    if (!sentence.ends_with(": ")) sentence += ", ";
    sentence += line;
  }
  return sentence;
}

}  // namespace

std::optional<TargetVerdict> of(const std::optional<OrvaneReport>& report, std::string_view id) {
  if (!report) return std::nullopt;
  const auto verdicts = TargetVerdicts::of(*report);
  const auto found =
      std::ranges::find(verdicts, id, [](const auto& verdict) { return verdict.target.id; });
  return found == verdicts.end() ? std::nullopt : std::optional(*found);
}

std::string word(const TargetVerdict& verdict) {
  const auto kind = TargetVerdicts::badge(verdict.target, verdict.evaluation).kind;
  return kind == "low" ? "unjudged" : std::string(kind);
}

std::optional<float> deltaLU(const TargetVerdict& verdict) {
  const auto level = Evaluator::judgedLevel(verdict.target, verdict.measurement);
  return level ? std::optional(*level - verdict.target.referenceLUFS) : std::nullopt;
}

std::string table(const OrvaneReport& report, const Console& console) {
  TextTable table({{"Target", Alignment::left, 2, true},
                   {"Asks for", Alignment::left, 3, true},
                   {"Verdict", Alignment::left, 3, true}},
                  2);
  for (const TargetVerdict& verdict : TargetVerdicts::of(report)) {
    const auto style = verdictStyle(TargetVerdicts::badge(verdict.target, verdict.evaluation).kind);
    const auto lines = TargetVerdicts::lines(verdict);
    table.addRow({{TerminalText::escaped(verdict.name)},
                  {TargetVerdicts::demandText(verdict.target)},
                  {lines.front(), style}});
    for (std::size_t i = 1; i < lines.size(); ++i)
      table.addRow({{}, {}, {"and " + lines[i], style}});
  }
  return "\n" + table.text(console);
}

void addJSON(JsonOutput::Document& document, const OrvaneReport& report) {
  document.addJSON("loudnessTargets",
                   orvane::json::encode(report.loudnessTargets, JsonOutput::kRecordStyle));
  document.addObjects("verdicts", TargetVerdicts::of(report), [&](const TargetVerdict& verdict) {
    document.add("id", verdict.target.id);
    document.add("isMet", Evaluator::isMet(verdict.evaluation));
    if (const auto level = Evaluator::judgedLevel(verdict.target, verdict.measurement)) {
      document.add("level", *level);
      document.add("deltaLU", *deltaLU(verdict));
    }
    document.addObjects("brokenRules", verdict.brokenRules, [&](const auto& rule) {
      document.add("rule", rawValue(rule.reason));
      document.add("actual", rule.actual);
      document.add("limit", rule.limit);
    });
    std::vector<std::string> notJudged;
    for (const auto reason : verdict.notJudged) notJudged.emplace_back(rawValue(reason));
    document.add("notJudged", notJudged);
  });
}

std::string json(const OrvaneReport& report, const std::string& url) {
  JsonOutput::Document document;
  document.add("url", url);
  addJSON(document, report);
  return document.takeLine();
}

Enforcement enforce(const OrvaneReport& report, Demand demand, const std::string& name) {
  std::vector<std::string> misses;
  std::string met;
  for (const TargetVerdict& verdict : TargetVerdicts::of(report)) {
    if (Evaluator::isMet(verdict.evaluation))
      met += (met.empty() ? ": meets " : ", ") + titled(verdict);
    else
      misses.push_back(name + ": " + missed(verdict));
  }
  if (demand == Demand::everyTarget || met.empty()) return {misses.empty(), misses};
  return {true, {name + met}};
}

Enforcement enforceKept(std::span<const std::string> targetIDs, std::span<const std::string> words,
                        Demand demand, const std::string& name) {
  std::vector<std::string> misses;
  for (std::size_t i = 0; i < targetIDs.size(); ++i)
    if (words[i] != "pass" && words[i] != "normalize")
      misses.push_back(name + ": misses " + targetIDs[i] + ", as its row of the summary says");
  const bool isEnough = demand == Demand::oneTarget && misses.size() < targetIDs.size();
  if (isEnough) misses.clear();
  return {misses.empty(), misses};
}

ExitCode Enforcement::tell(Console& console) const {
  for (const auto& sentence : sentences) isMet ? console.note(sentence) : console.error(sentence);
  return isMet ? ExitCode::done : ExitCode::targetMissed;
}

}  // namespace orvane::cli::TargetFindings
