#include "cli/output/edit_text.h"

#include <cmath>
#include <utility>

#include "cli/options/edit_names.h"
#include "cli/options/named_choice.h"
#include "cli/output/number_text.h"

namespace orvane::cli::EditText {
namespace {

using EditOperations::SilenceMode;

std::string time(std::int64_t frames, double sampleRate) {
  return NumberText::duration(static_cast<double>(frames) / sampleRate);
}

std::string number(std::int64_t frame) {
  return "#" + std::to_string(frame);
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
    return "Silence: " + length(edit.durationFrames) + " inserted at " + place(at, sampleRate);
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
  std::string operator()(const ExpandEdit& edit) const {
    const auto regions = static_cast<std::int64_t>(edit.speech.size());
    const double makeup = edit.expansion.makeupDB;
    return "Expand: " + NumberText::signedFixed(edit.expansion.reductionDB, 2) +
           " dB where nobody speaks, " + NumberText::counted(regions, "region") + " of speech" +
           (makeup == 0 ? "" : ", " + NumberText::signedFixed(makeup, 2) + " dB on everything");
  }
  std::string operator()(const SwapEdit&) const { return "Channels swapped"; }
  std::string operator()(const PeakEdit& edit) const {
    return "Sample peak: to " + NumberText::fixed(edit.targetDB, 2) + " dBFS";
  }
  std::string operator()(const LimitEdit& edit) const { return "Limit: " + ceiling(edit); }
  std::string operator()(const NormalizeEdit& edit) const {
    return "Normalize: to " + NumberText::fixed(edit.targetLUFS, 2) + " LUFS, " + ceiling(edit);
  }

  static std::string ceiling(const auto& edit) {
    return "true peaks of at most " + NumberText::fixed(edit.ceilingDBTP, 2) + " dBTP";
  }

  std::string range(const auto& edit) const { return EditText::range(edit.range, sampleRate); }
  std::string length(std::int64_t frames) const { return EditText::length(frames, sampleRate); }
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
  void operator()(const ExpandEdit& edit) const {
    name("expand");
    document.add("reductionDB", edit.expansion.reductionDB);
    document.add("makeupDB", edit.expansion.makeupDB);
    document.add("attackMs", edit.expansion.attackMs);
    document.add("releaseMs", edit.expansion.releaseMs);
    document.addObjects("speech", edit.speech, [this](const FrameRange& range) {
      document.add("startFrame", range.start);
      document.add("endFrame", range.end);
    });
  }
  void operator()(const SwapEdit&) const { name("swap"); }
  void operator()(const PeakEdit& edit) const {
    name("peak");
    document.add("targetDB", edit.targetDB);
  }
  void operator()(const LimitEdit& edit) const {
    name("limit");
    document.add("ceilingDBTP", edit.ceilingDBTP);
  }
  void operator()(const NormalizeEdit& edit) const {
    name("normalize");
    document.add("targetLUFS", edit.targetLUFS);
    document.add("ceilingDBTP", edit.ceilingDBTP);
  }

  void name(const char* operation) const { document.add("operation", std::string(operation)); }

  void begin(const char* operation, const auto& edit) const {
    name(operation);
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

std::string place(std::int64_t frame, double sampleRate) {
  return number(frame) + " (" + time(frame, sampleRate) + ")";
}

std::string range(const FrameRange& frames, double sampleRate) {
  return number(frames.start) + " to " + number(frames.end) + " (" +
         time(frames.start, sampleRate) + " to " + time(frames.end, sampleRate) + ")";
}

std::string length(std::int64_t frames, double sampleRate) {
  return NumberText::counted(frames, "frame") + " (" + time(frames, sampleRate) + ")";
}

std::string levels(const ProgrammeLevels& before, const ProgrammeLevels& after) {
  return "Integrated " +
         change(double{before.integratedLUFS}, double{after.integratedLUFS}, "LUFS") +
         ", true peak " + change(double{before.truePeakDB}, double{after.truePeakDB}, "dBTP");
}

bool isTargetReached(const Normalization& normalization) {
  constexpr double kTolerance = 0.1;
  return std::abs(normalization.outcome.loudnessAfter - normalization.edit.targetLUFS) <=
         kTolerance;
}

std::string description(const Normalization& normalization) {
  const double after = normalization.outcome.loudnessAfter;
  if (!std::isfinite(after)) return "There is no loudness that could be normalized";
  const std::string reached = "Normalized to " + NumberText::fixed(after, 2) + " LUFS";
  if (isTargetReached(normalization)) return reached;
  return reached + ", which misses the target by " +
         NumberText::fixed(std::abs(after - normalization.edit.targetLUFS), 2) + " LU";
}

void addNormalizations(JsonOutput::Document& document,
                       const std::vector<Normalization>& normalizations) {
  if (normalizations.empty()) return;
  document.addObjects("normalizations", normalizations, [&](const Normalization& each) {
    document.add("targetLUFS", each.edit.targetLUFS);
    document.add("ceilingDBTP", each.edit.ceilingDBTP);
    document.add("integratedLUFS", each.outcome.loudnessAfter);
    document.add("limiterPasses", std::int64_t{each.outcome.limiterPasses});
    document.add("isTargetReached", isTargetReached(each));
  });
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
