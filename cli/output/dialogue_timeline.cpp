#include "cli/output/dialogue_timeline.h"

#include <algorithm>

#include "cli/output/json_output.h"
#include "cli/output/number_text.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/speech/dialogue/dialogue_coding.h"
#include "orvane/text/iso8601_date.h"

namespace orvane::cli::DialogueTimeline {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kFewestColumns = 20;
constexpr std::size_t kMostColumns = 96;

const char* sourceText(DialogueRegionSource source) {
  switch (source) {
    case DialogueRegionSource::silero:
      return "speech detector";
    case DialogueRegionSource::userEdited:
      return "changed by a user";
    case DialogueRegionSource::imported:
      return "imported";
  }
  return "";
}

const char* originText(const DialogueRegion& region, DialogueRegionSource source) {
  if (region.isPristineVAD()) return "detected";
  if (region.isModifiedVAD()) return "changed";
  return source == DialogueRegionSource::imported ? "imported" : "drawn";
}

std::string rule(const DialogueSidecar& sidecar, std::size_t columns) {
  const std::string start = NumberText::duration(0);
  const std::string end = NumberText::duration(sidecar.audioFile.durationSeconds);
  const std::size_t used = start.size() + end.size();
  return start + std::string(columns > used ? columns - used : 1, ' ') + end;
}

std::string drawing(const DialogueSidecar& sidecar, const Console& console) {
  if (!(sidecar.audioFile.durationSeconds > 0)) return "";
  const std::size_t columns =
      std::clamp(console.traits().columns, kFewestColumns, kMostColumns) - 2 * kIndent;
  const std::string indent(kIndent, ' ');
  return "\n" + indent + bar(sidecar, columns) + "\n" + indent +
         console.styled(Style::dim, rule(sidecar, columns)) + "\n";
}

std::string figures(const DialogueSidecar& sidecar, const Console& console) {
  const auto& audio = sidecar.audioFile;
  TextTable table({{}, {}}, kIndent);
  const auto add = [&](const char* name, const std::string& value) {
    table.addRow({{name, Style::dim}, {value}});
  };
  add("Duration", NumberText::duration(audio.durationSeconds) + ", " +
                      NumberText::sampleRate(audio.sampleRate));
  add("Dialogue", summary(sidecar));
  add("Source", sourceText(sidecar.source));
  add("Saved", TerminalText::escaped(ISO8601Date::text(sidecar.modifiedAt) + " by " +
                                     sidecar.generator + " " + sidecar.generatorVersion));
  return table.text(console);
}

std::string list(const DialogueSidecar& sidecar, const Console& console) {
  if (sidecar.regions.empty()) return "";
  using Alignment = TextTable::Alignment;
  TextTable table({{"#", Alignment::right},
                   {"Start", Alignment::right},
                   {"End", Alignment::right},
                   {"Length", Alignment::right},
                   {"Origin"},
                   {"Label"}},
                  kIndent);
  std::size_t number = 0;
  for (const auto& region : sidecar.regions) {
    table.addRow({{std::to_string(++number)},
                  {NumberText::duration(region.start)},
                  {NumberText::duration(region.end)},
                  {NumberText::duration(region.duration())},
                  {originText(region, sidecar.source)},
                  {TerminalText::escaped(region.label.value_or(""))}});
  }
  return "\n" + table.text(console);
}

}  // namespace

std::vector<HalfOpenTimeRange> covered(const DialogueSidecar& sidecar) {
  std::vector<HalfOpenTimeRange> parts;
  for (const auto& region : sidecar.regions) {
    const HalfOpenTimeRange part{
        .lowerBound = std::max(region.start, 0.0),
        .upperBound = std::min(region.end, sidecar.audioFile.durationSeconds)};
    if (part.lowerBound < part.upperBound) parts.push_back(part);
  }
  std::sort(parts.begin(), parts.end(),
            [](const auto& a, const auto& b) { return a.lowerBound < b.lowerBound; });
  std::vector<HalfOpenTimeRange> merged;
  for (const auto& part : parts) {
    if (merged.empty() || part.lowerBound > merged.back().upperBound)
      merged.push_back(part);
    else
      merged.back().upperBound = std::max(merged.back().upperBound, part.upperBound);
  }
  return merged;
}

double totalSeconds(const DialogueSidecar& sidecar) {
  double total = 0;
  for (const auto& part : covered(sidecar)) total += part.upperBound - part.lowerBound;
  return total;
}

double percentage(const DialogueSidecar& sidecar) {
  const double duration = sidecar.audioFile.durationSeconds;
  return duration > 0 ? std::min(100.0, totalSeconds(sidecar) / duration * 100) : 0;
}

std::string bar(const DialogueSidecar& sidecar, std::size_t columns) {
  const double step = sidecar.audioFile.durationSeconds / static_cast<double>(columns);
  const auto parts = covered(sidecar);
  auto part = parts.begin();
  std::string result;
  for (std::size_t i = 0; i < columns; ++i) {
    const double start = step * static_cast<double>(i);
    const double end = start + step;
    double share = 0;
    while (part != parts.end() && part->lowerBound < end) {
      share += std::min(part->upperBound, end) - std::max(part->lowerBound, start);
      if (part->upperBound > end) break;  // goes on in the next column
      ++part;
    }
    result += share >= step / 2 ? "█" : share > 0 ? "▒" : "·";
  }
  return result;
}

std::string summary(const DialogueSidecar& sidecar) {
  return NumberText::counted(static_cast<std::int64_t>(sidecar.regions.size()), "region") + ", " +
         NumberText::duration(totalSeconds(sidecar)) + " of dialogue (" +
         NumberText::fixed(percentage(sidecar), 1) + " %)";
}

std::string block(const InputName& file, const DialogueSidecar& sidecar, const Console& console) {
  return console.styled(Style::bold, TerminalText::escaped(file.shown())) + "\n" +
         figures(sidecar, console) + drawing(sidecar, console) + list(sidecar, console);
}

std::string json(const InputName& file, const DialogueSidecar& sidecar,
                 const std::optional<SpeechModelName>& model) {
  JsonOutput::Document document;
  document.addName(file.display);
  document.add("dialogueSeconds", totalSeconds(sidecar));
  document.add("dialoguePercentage", percentage(sidecar));
  if (model) document.add("speechModel", *model);
  json::Style style = JsonOutput::kRecordStyle;
  style.sortsKeys = true;  // as in its file
  document.addJSON("sidecar", json::encode(sidecar, style));
  return document.takeLine();
}

}  // namespace orvane::cli::DialogueTimeline
