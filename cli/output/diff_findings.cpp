#include "cli/output/diff_findings.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include "cli/commands/measured_file.h"
#include "cli/output/json_output.h"
#include "cli/output/number_text.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/core/decibels.h"

namespace orvane::cli {
namespace {

/// Depths below A, in dB, that earn a null its name: a coder's residual lies 30 to 60 dB down, that
/// of dither and rounding deeper, and at 6 dB A itself is heard.
constexpr double kDeep = 60;
constexpr double kFair = 30;
constexpr double kShallow = 6;

std::string decibels(double value) {
  return NumberText::fixed(value, 2);
}

/// The level of one step of samples with that many bits.
float stepDB(int bits) {
  return core::linearToDB(std::ldexp(1.0F, 1 - bits));
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const auto& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

}  // namespace

std::string DiffFindings::nullInWords() const {
  if (!std::isfinite(result.residualRMSDB))
    return "cannot be judged: samples of it are not finite numbers";
  if (std::isinf(result.residualPeakDB))
    return result.appliedGainB == 1 ? "exact: not one sample differs"
                                    : "exact: but for the gain not one sample differs";
  for (const int bits : {24, 16})
    if (result.residualPeakDB <= stepDB(bits))
      return "very deep: nothing above one step of " + std::to_string(bits) + " bits";
  const double depth =
      static_cast<double>(detail.rmsDBOfA) - static_cast<double>(result.residualRMSDB);
  if (depth < kShallow) return "none: what differs is about as loud as A, or louder";
  const char* const name = depth >= kDeep ? "deep" : depth >= kFair ? "fair" : "shallow";
  return std::string(name) + ": what differs lies " + NumberText::fixed(depth, 1) + " dB below A";
}

std::optional<std::string> DiffFindings::offsetInWords() const {
  if (!detail.offset) return std::nullopt;
  const std::int64_t frames = std::abs(detail.offset->frames);
  const double milliseconds = static_cast<double>(frames) / result.sampleRate * 1000;
  return "B comes " + NumberText::counted(frames, "frame") + " (" +
         NumberText::fixed(milliseconds, 3) + " ms) " +
         (detail.offset->frames > 0 ? "later" : "earlier") + " than A";
}

bool DiffFindings::isWithin() const {
  if (!atMostDB) return true;
  return std::isfinite(result.residualRMSDB) &&
         static_cast<double>(result.residualPeakDB) <= *atMostDB;
}

std::string DiffFindings::missed() const {
  const std::string limit = NumberText::shortest(atMostDB.value_or(0)) + " dBFS";
  if (!std::isfinite(result.residualRMSDB))
    return "the residual has samples that are not finite numbers, and not at most " + limit;
  return "the residual reaches " + decibels(static_cast<double>(result.residualPeakDB)) +
         " dBFS, at most " + limit + " is asked for";
}

std::vector<std::string> DiffFindings::warnings() const {
  std::vector<std::string> texts;
  for (const auto& [file, source] : {std::pair(&a, &detail.a), std::pair(&b, &detail.b)})
    for (const auto& warning : source->warnings)
      texts.push_back(file->string() + ": " + warning.text);
  const std::int64_t surplus = detail.a.frameLength - detail.b.frameLength;
  if (surplus != 0)
    texts.push_back((surplus > 0 ? a : b).string() + " is longer by " +
                    NumberText::counted(std::abs(surplus), "frame") + ", which are not compared");
  const auto channels = static_cast<std::size_t>(result.channelCount);
  const auto namesOfA = shownChannelNames(detail.a.layout, channels);
  const auto namesOfB = shownChannelNames(detail.b.layout, channels);
  if (namesOfA != namesOfB)
    texts.push_back("the layouts differ: " + joined(namesOfA) + " in A, " + joined(namesOfB) +
                    " in B; channels are compared in this order");
  return texts;
}

std::string DiffFindings::table(const Console& console) const {
  TextTable rows({{}, {}}, 2);
  const auto add = [&](const char* name, const std::string& text, Style style = Style::plain) {
    rows.addRow({{name}, {TerminalText::escaped(text), style}});
  };
  add("Residual",
      "peak " + decibels(static_cast<double>(result.residualPeakDB)) + " dBFS, RMS " +
          decibels(static_cast<double>(result.residualRMSDB)) + " dBFS",
      Style::bold);
  add("Null", nullInWords());
  add("Compared", NumberText::duration(result.durationSeconds) + " (" +
                      NumberText::counted(result.buffer->frameLength(), "frame") + "), " +
                      NumberText::sampleRate(result.sampleRate) + ", " +
                      NumberText::counted(result.channelCount, "channel"));
  if (result.appliedGainB != 1)
    add("Gain of B",
        NumberText::signedFixed(core::linearToDB(static_cast<double>(result.appliedGainB)), 2) +
            " dB");
  if (const auto offset = offsetInWords())
    add("Shifted",
        *offset + " (correlation " + NumberText::fixed(detail.offset->correlation, 3) + ")",
        Style::yellow);
  if (!residualFile.empty()) add("Written", residualFile.string());
  return console.styled(Style::bold, TerminalText::escaped(a.string()) + " - " +
                                         TerminalText::escaped(b.string())) +
         "\n" + rows.text(console);
}

std::string DiffFindings::json() const {
  JsonOutput::Document document;
  document.add("fileA", a.string());
  document.add("fileB", b.string());
  document.add("sampleRate", result.sampleRate);
  document.add("channelCount", result.channelCount);
  document.add("durationSeconds", result.durationSeconds);
  document.add("residualPeakDB", result.residualPeakDB);
  document.add("residualRMSDB", result.residualRMSDB);
  document.add("appliedGainB", result.appliedGainB);
  document.add("rmsDBOfA", detail.rmsDBOfA);
  document.add("nullDescription", nullInWords());
  if (detail.offset) {
    document.add("offsetFrames", detail.offset->frames);
    document.add("offsetSeconds", static_cast<double>(detail.offset->frames) / result.sampleRate);
    document.add("offsetCorrelation", detail.offset->correlation);
  }
  if (atMostDB) {
    document.add("atMostDB", *atMostDB);
    document.add("isAtMost", isWithin());
  }
  if (!residualFile.empty()) document.add("residualFile", residualFile.string());
  document.add("warnings", warnings());
  return document.takeLine();
}

}  // namespace orvane::cli
