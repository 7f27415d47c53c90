#include "orvane/report/csv_report_builder.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <vector>

#include "orvane/report/report_text.h"
#include "orvane/text/text_list.h"

namespace orvane::CSVReportBuilder {
namespace {

using ReportText::fixed;

bool isDecimalNumber(std::string_view text) {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return false;
  }
  double value = 0;
  const auto [end, error] = std::from_chars(text.begin(), text.end(), value);
  const bool isWhole = end == text.end() && error != std::errc::invalid_argument;
  // "inf" and "nan(1)" read as numbers, but not to a spreadsheet.
  return isWhole && text.find_first_of("nN") == std::string_view::npos;
}

/// A field as it is written. Spreadsheets run what begins like a formula.
std::string escape(std::string_view value) {
  const std::string text = ReportText::visible(value);
  if (TextList::startsLikeFormula(text) && !isDecimalNumber(text))
    return TextList::csvQuoted("'" + text);
  return TextList::csvCell(text);
}

std::string row(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) {
    if (&field != &fields.front()) line += ',';
    line += escape(field);
  }
  return line + "\r\n";
}

/// Empty when it is not finite.
std::string seconds(double value) {
  return std::isfinite(value) ? fixed(value, 3) : "";
}

/// Empty when it is absent or not finite.
std::string number(std::optional<float> value) {
  const auto known = ReportText::finite(value);
  return known ? fixed(*known, 2) : "";
}

std::string musicRows(const MusicAnalysisResult& music) {
  const auto key = music.dominantKey();
  const auto tempo = ReportText::finite(music.beatsPerMinute);
  return row({"Key (Apple Music Understanding)", key ? key->label() : ""}) +
         row({"Tempo BPM (Apple Music Understanding)", tempo ? fixed(*tempo, 1) : ""});
}

std::string stemRows(const StemGatedLoudness& gated) {
  return row({"Vocal-present (LUFS, stem-gated)", number(gated.vocal.presentLUFS)}) +
         row({"Bed without vocal (LUFS, stem-gated)", number(gated.vocal.absentLUFS)}) +
         row({"Vocal balance (LU)", number(gated.vocal.balanceLU)}) +
         row({"Drums-present (LUFS, stem-gated)", number(gated.drums.presentLUFS)}) +
         row({"Without drums (LUFS, stem-gated)", number(gated.drums.absentLUFS)}) +
         row({"Drums balance (LU)", number(gated.drums.balanceLU)});
}

std::vector<std::string> chapterCells(const ReportChapterEntry& entry) {
  const auto speech = ReportText::finite(entry.speechPercentage);
  return {std::to_string(entry.index),
          entry.name,
          seconds(entry.startSec),
          seconds(entry.endSec),
          seconds(entry.endSec - entry.startSec),
          number(entry.rmsDBFS),
          number(entry.integratedLUFS),
          number(entry.deviationFromMedianLU),
          number(entry.truePeakDBTP),
          number(entry.samplePeakDBFS),
          number(entry.loudnessRange),
          number(entry.maxMomentaryLUFS),
          number(entry.maxShortTermLUFS),
          number(entry.speechGatedLUFS),
          number(entry.noiseFloorDBRMS),
          speech ? fixed(*speech * 100, 2) : ""};
}

/// What is said of the channels, where they were measured as others than they are.
std::string unusualLayout(const ReportFileInfo& file) {
  return file.channelLayout.ends_with(kDualMonoLayout) ? file.channelLayout : "";
}

/// With a column more where there is a layout to be told.
std::string chapterTable(const ReportChapterTable& table, const std::string& layout) {
  const auto line = [&](std::vector<std::string> cells, const std::string& layoutCell) {
    if (!layout.empty()) cells.push_back(layoutCell);
    return row(cells);
  };
  std::string text =
      line({"Index", "Name", "Start (s)", "End (s)", "Duration (s)", "RMS (dBFS)",
            "Integrated (LUFS)", "Deviation (LU)", "True Peak (dBTP)", "Sample Peak (dBFS)",
            "LRA (LU)", "Max Momentary (LUFS)", "Max Short-term (LUFS)", "Dialog (LUFS)",
            "Noise Floor (dB RMS)", "Speech (%)"},
           "Channel Layout");
  for (const ReportChapterEntry& entry : table.entries) text += line(chapterCells(entry), layout);
  return text;
}

}  // namespace

std::string build(const OrvaneReport& report) {
  const bool hasChapters = report.chapters && !report.chapters->entries.empty();
  return hasChapters ? chapterTable(*report.chapters, unusualLayout(report.file))
                     : fileMetricsCSV(report);
}

std::string chaptersCSV(const ReportChapterTable& table) {
  return chapterTable(table, "");
}

std::string fileMetricsCSV(const OrvaneReport& report) {
  const ReportFileInfo& file = report.file;
  const ReportFullFileLoudness& loudness = report.fullFile;
  std::string text = row({"Metric", "Value"});
  text += row({"File", file.fileName});
  text += row({"Duration (s)", seconds(file.duration)});
  text +=
      row({"Sample Rate (Hz)", std::isfinite(file.sampleRate) ? fixed(file.sampleRate, 0) : ""});
  text += row({"Channels", std::to_string(file.channelCount)});
  const std::string layout = unusualLayout(file);
  if (!layout.empty()) text += row({"Channel Layout", layout});
  if (file.rawFormat) text += row({"Raw Declared Format", file.rawFormat->summary()});
  text += row({"Integrated (LUFS)", number(loudness.integratedLUFS)});
  text += row({"Loudness Range (LU)", number(loudness.loudnessRange)});
  text += row({"True Peak (dBTP)", number(loudness.truePeakDB)});
  text += row({"Sample Peak (dBFS)", number(loudness.samplePeakDB)});
  text += row({"Max Momentary (LUFS)", number(loudness.maxMomentaryLUFS)});
  text += row({"Max Short-term (LUFS)", number(loudness.maxShortTermLUFS)});
  text += row({"Speech-gated (LUFS)", number(loudness.speechGatedLUFS)});
  text += row({"Speech (%)", number(loudness.speechPercentage)});
  if (loudness.dynamicRange)
    text += row({"Dynamic Range (DR)", std::to_string(*loudness.dynamicRange)});
  if (report.musicAnalysis) text += musicRows(*report.musicAnalysis);
  if (report.stemGatedLoudness) text += stemRows(*report.stemGatedLoudness);
  return text;
}

}  // namespace orvane::CSVReportBuilder
