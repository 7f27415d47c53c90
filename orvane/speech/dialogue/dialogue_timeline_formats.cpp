#include "orvane/speech/dialogue/dialogue_timeline_formats.h"

#include <cmath>
#include <utility>

#include "orvane/text/number_text.h"
#include "orvane/text/text_list.h"
#include "orvane/text/timed_list.h"
#include "orvane/text/utf8.h"

namespace orvane {

namespace DialogueTimelineFormats {
namespace {

using TextList::quoted;
using TextList::trimmed;

double time(std::string_view cell, const char* name, std::size_t line) {
  const auto number = trimmed(cell);
  if (number.empty())
    throw DialogueTimelineError(line, std::string("the ") + name + " is missing.");
  const auto value = NumberText::parsed<double>(number);
  if (!value || !std::isfinite(*value))
    throw DialogueTimelineError(
        line, std::string("the ") + name + " " + quoted(number) + " is no number of seconds.");
  if (*value < 0)
    throw DialogueTimelineError(
        line, std::string("the ") + name + " " + quoted(number) + " lies before the file.");
  return *value;
}

DialogueRegion regionOf(TimedList::Entry entry) {
  const std::string end = entry.end.value_or("");
  const double startTime = time(entry.start, "start", entry.line);
  const double endTime = time(end, "end", entry.line);
  if (endTime < startTime)
    throw DialogueTimelineError(entry.line, "the end " + quoted(trimmed(end)) +
                                                " lies before the start " +
                                                quoted(trimmed(entry.start)) + ".");
  if (entry.name && !isValidUTF8(*entry.name))
    throw DialogueTimelineError(entry.line, "the label is not UTF-8.");
  return {UUID::random(), startTime, endTime, std::move(entry.name)};
}

/// Apostrophes that stand before a formula already count too, so that taking one away is the exact
/// way back. An empty label is in quotes: no label has none.
std::string labelCell(const std::string& label) {
  if (label.empty()) return TextList::csvQuoted(label);
  return TextList::csvCell(TextList::looksLikeFormula(label) ? "'" + label : label);
}

const char* originName(const DialogueRegion& region) {
  if (region.isManual()) return "drawn";
  return region.isPristineVAD() ? "detected" : "changed";
}

}  // namespace

std::optional<Format> formatFromName(std::string_view name) noexcept {
  if (name == "csv") return Format::csv;
  if (name == "audacity") return Format::audacityLabels;
  return std::nullopt;
}

Format formatOf(std::string_view bytes) {
  const std::string list = TextList::asUTF8(bytes);
  const std::string_view text = TextList::withoutByteOrderMark(list);
  const auto start = text.find_first_not_of("\r\n");
  const auto tab = text.find('\t');
  if (start == std::string_view::npos || tab == std::string_view::npos || tab < start)
    return Format::csv;
  const auto first = trimmed(text.substr(start, tab - start));
  return NumberText::parsed<double>(first) ? Format::audacityLabels : Format::csv;
}

std::string text(const std::vector<DialogueRegion>& regions, Format format) {
  return format == Format::csv ? csv(regions) : audacityLabels(regions);
}

std::vector<DialogueRegion> regions(std::string_view bytes, Format format) {
  const std::string text = TextList::asUTF8(bytes);
  return format == Format::csv ? regionsFromCSV(text) : regionsFromAudacityLabels(text);
}

std::string csv(const std::vector<DialogueRegion>& regions) {
  std::string result = "start,end,label,origin\r\n";
  for (const auto& region : regions) {
    result += NumberText::withoutExponent(region.start) + "," +
              NumberText::withoutExponent(region.end) + ",";
    if (region.label) result += labelCell(*region.label);
    result += std::string(",") + originName(region) + "\r\n";
  }
  return result;
}

std::vector<DialogueRegion> regionsFromCSV(std::string_view text) {
  std::vector<DialogueRegion> regions;
  TimedList::readCSV(
      text, {.start = {"start"}, .end = {"end"}, .name = {"label"}, .needsEnd = true},
      [&](TimedList::Entry entry) { regions.push_back(regionOf(std::move(entry))); });
  return regions;
}

std::string audacityLabels(const std::vector<DialogueRegion>& regions) {
  std::string result;
  for (const auto& region : regions) {
    std::string label = region.label.value_or("");
    for (char& c : label)
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
    result += NumberText::withoutExponent(region.start) + "\t" +
              NumberText::withoutExponent(region.end) + "\t" + label + "\n";
  }
  return result;
}

std::vector<DialogueRegion> regionsFromAudacityLabels(std::string_view text) {
  std::vector<DialogueRegion> regions;
  TimedList::readAudacityLabels(text, [&](TimedList::Entry entry) {
    if (!entry.end) throw DialogueTimelineError(entry.line, "there is no tab behind the start.");
    regions.push_back(regionOf(std::move(entry)));
  });
  return regions;
}

}  // namespace DialogueTimelineFormats
}  // namespace orvane
