#include "cli/output/edit_text.h"

#include <utility>

#include "cli/options/edit_names.h"
#include "cli/options/named_choice.h"
#include "cli/output/number_text.h"

namespace orvane::cli::EditText {
namespace {

using EditOperations::SilenceMode;

std::string place(std::int64_t frame) {
  return "#" + std::to_string(frame);
}

std::string time(std::int64_t frames, double sampleRate) {
  return NumberText::duration(static_cast<double>(frames) / sampleRate);
}

std::string text(const FrameRange& range, double sampleRate) {
  return place(range.start) + " to " + place(range.end) + " (" + time(range.start, sampleRate) +
         " to " + time(range.end, sampleRate) + ")";
}

std::string nameOf(EditOperations::FadeCurve curve) {
  return nameOfChoice(EditNames::kCurves, curve);
}
std::string nameOf(EditOperations::FadeDirection direction) {
  return nameOfChoice(EditNames::kDirections, direction);
}
std::string nameOf(SilenceMode mode) {
  return nameOfChoice(EditNames::kSilences, mode);
}

struct Description {
  double sampleRate;

  std::string operator()(const TrimEdit& edit) const { return "Trim: " + range(edit); }
  std::string operator()(const CutEdit& edit) const {
    return "Cut: " + range(edit) + ", crossfade of " + length(edit.crossfadeFrames);
  }
  std::string operator()(const SilenceEdit& edit) const {
    if (edit.mode == SilenceMode::replace) return "Silence: " + range(edit);
    const std::int64_t at =
        edit.mode == SilenceMode::insertBefore ? edit.range.start : edit.range.end;
    return "Silence: " + length(edit.durationFrames) + " inserted at " + place(at) + " (" +
           time(at, sampleRate) + ")";
  }
  std::string operator()(const FadeEdit& edit) const {
    return "Fade " + nameOf(edit.direction) + ", " + nameOf(edit.curve) + ": " + range(edit);
  }
  std::string operator()(const GainEdit& edit) const {
    return "Gain " + NumberText::signedFixed(edit.gainDB, 2) + " dB: " + range(edit);
  }
  std::string operator()(const InvertEdit& edit) const {
    return "Polarity inverted: " + range(edit);
  }
  std::string operator()(const DCOffsetEdit& edit) const {
    return "Offset removed: " + range(edit);
  }
  std::string operator()(const SwapEdit&) const { return "Channels swapped"; }

  std::string range(const auto& edit) const { return text(edit.range, sampleRate); }
  std::string length(std::int64_t frames) const {
    return NumberText::counted(frames, "frame") + " (" + time(frames, sampleRate) + ")";
  }
};

struct Keys {
  JsonOutput::Document& document;

  void operator()(const TrimEdit& edit) const { begin("trim", edit); }
  void operator()(const CutEdit& edit) const {
    begin("cut", edit);
    document.add("crossfadeFrames", edit.crossfadeFrames);
  }
  void operator()(const SilenceEdit& edit) const {
    begin("silence", edit);
    document.add("mode", nameOf(edit.mode));
    document.add("durationFrames", edit.durationFrames);
  }
  void operator()(const FadeEdit& edit) const {
    begin("fade", edit);
    document.add("direction", nameOf(edit.direction));
    document.add("curve", nameOf(edit.curve));
  }
  void operator()(const GainEdit& edit) const {
    begin("gain", edit);
    document.add("gainDB", edit.gainDB);
  }
  void operator()(const InvertEdit& edit) const { begin("invert", edit); }
  void operator()(const DCOffsetEdit& edit) const { begin("dc", edit); }
  void operator()(const SwapEdit&) const { document.add("operation", std::string("swap")); }

  void begin(const char* operation, const auto& edit) const {
    document.add("operation", std::string(operation));
    document.add("startFrame", edit.range.start);
    document.add("endFrame", edit.range.end);
  }
};

std::string change(double before, double after, const char* unit) {
  return NumberText::fixed(before, 2) + " → " + NumberText::fixed(after, 2) + " " + unit;
}

}  // namespace

std::string description(const Edit& edit, double sampleRate) {
  return std::visit(Description{sampleRate}, edit);
}

std::string levels(const ProgrammeLevels& before, const ProgrammeLevels& after) {
  return "Integrated " +
         change(double{before.integratedLUFS}, double{after.integratedLUFS}, "LUFS") +
         ", true peak " + change(double{before.truePeakDB}, double{after.truePeakDB}, "dBTP");
}

void addEdits(JsonOutput::Document& document, const std::vector<Edit>& edits) {
  document.addObjects("edits", edits, [&](const Edit& edit) { std::visit(Keys{document}, edit); });
}

void addLevels(JsonOutput::Document& document, const ProgrammeLevels& before,
               const ProgrammeLevels& after) {
  document.add("integratedLUFSBefore", before.integratedLUFS);
  document.add("integratedLUFSAfter", after.integratedLUFS);
  document.add("truePeakDBBefore", before.truePeakDB);
  document.add("truePeakDBAfter", after.truePeakDB);
}

}  // namespace orvane::cli::EditText
