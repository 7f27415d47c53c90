#include "tests/core/loudness/conformance_cases.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>

#include "orvane/core/loudness/loudness_processor.h"
#include "tests/core/peak/true_peak_signals.h"
#include "tests/support/signals.h"

namespace orvane::core::conformance {
namespace {

using test::kSilentLevel;
using test::ToneSegment;
using Segments = std::vector<ToneSegment>;

constexpr std::uint32_t kToneHz = 1000;

struct Measurement {
  std::vector<LoudnessHistoryEntry> history{};
  double integrated = 0;
  double range = 0;
};

/// Several channels may share one signal.
Measurement measure(std::uint32_t sampleRate,
                    const std::vector<const std::vector<float>*>& channels) {
  LoudnessProcessor meter(sampleRate, static_cast<std::uint32_t>(channels.size()));
  meter.isRecording = true;
  std::vector<const float*> pointers;
  for (const auto* channel : channels) pointers.push_back(channel->data());
  meter.process(pointers, channels.front()->size());
  meter.flushPartialBlock();
  return {meter.history(), static_cast<double>(meter.integratedLUFS()),
          static_cast<double>(meter.loudnessRange())};
}

Measurement measureStereo(std::uint32_t sampleRate, const Segments& segments) {
  const auto samples = test::tone(sampleRate, kToneHz, segments);
  return measure(sampleRate, {&samples, &samples});
}

Segments repeated(const Segments& segments, int times) {
  Segments result;
  for (int i = 0; i < times; ++i) result.insert(result.end(), segments.begin(), segments.end());
  return result;
}

using Curve = float LoudnessHistoryEntry::*;
constexpr Curve kMomentary = &LoudnessHistoryEntry::momentary;
constexpr Curve kShortTerm = &LoudnessHistoryEntry::shortTerm;

/// The curve must stand at `expected` from `firstStep` on.
void addConstant(std::vector<Reading>& readings, const Measurement& measured, Curve curve,
                 std::size_t firstStep, double expected) {
  for (std::size_t step = firstStep; step < measured.history.size(); ++step)
    readings.push_back({expected, static_cast<double>(measured.history[step].*curve)});
}

double highest(std::span<const LoudnessHistoryEntry> history, Curve curve) {
  float result = -INFINITY;
  for (const auto& entry : history) result = std::max(result, entry.*curve);
  return static_cast<double>(result);
}

// Makers of `Case::measure`, one per kind of demand.

auto steadyTone(double level) {
  return [level](std::uint32_t sampleRate) {
    const auto measured = measureStereo(sampleRate, {{20, level}});
    std::vector<Reading> readings{{level, measured.integrated}};
    addConstant(readings, measured, kMomentary, 9, level);
    addConstant(readings, measured, kShortTerm, 29, level);
    return readings;
  };
}

auto integrated(const Segments& segments) {
  return [segments](std::uint32_t sampleRate) {
    return std::vector<Reading>{{-23.0, measureStereo(sampleRate, segments).integrated}};
  };
}

std::vector<Reading> fiveChannels(std::uint32_t sampleRate) {
  const auto at = [&](double level) {
    return test::tone(sampleRate, kToneHz, Segments{{20, level}});
  };
  const auto front = at(-28), centre = at(-24), surround = at(-30);
  return {{-23.0, measure(sampleRate, {&front, &front, &centre, &surround, &surround}).integrated}};
}

auto constantCurve(Curve curve, std::size_t firstStep, const Segments& segments) {
  return [=](std::uint32_t sampleRate) {
    std::vector<Reading> readings;
    addConstant(readings, measureStereo(sampleRate, segments), curve, firstStep, -23.0);
    return readings;
  };
}

/// Twenty files; the sound begins `shift` later in each.
auto maximumPerFile(Curve curve, double shift, double soundSeconds) {
  return [=](std::uint32_t sampleRate) {
    std::vector<Reading> readings;
    for (int i = 0; i < 20; ++i) {
      const auto measured = measureStereo(
          sampleRate, {{i * shift, kSilentLevel}, {soundSeconds, -23}, {1, kSilentLevel}});
      readings.push_back({-23.0, highest(measured.history, curve)});
    }
    return readings;
  };
}

/// One file of twenty such stretches, each 1 dB louder than the one before.
auto maximumPerStretch(Curve curve, double shift, double soundSeconds) {
  return [=](std::uint32_t sampleRate) {
    Segments segments;
    for (int i = 0; i < 20; ++i) {
      segments.push_back({i * shift, kSilentLevel});
      segments.push_back({soundSeconds, -38.0 + i});
      segments.push_back({soundSeconds - i * shift, kSilentLevel});
    }
    const auto measured = measureStereo(sampleRate, segments);
    const auto steps = static_cast<std::size_t>(std::lround(2 * soundSeconds / 0.1));
    std::vector<Reading> readings;
    for (std::size_t i = 0; i < 20; ++i)
      readings.push_back({-38.0 + static_cast<double>(i),
                          highest(std::span(measured.history).subspan(i * steps, steps), curve)});
    return readings;
  };
}

auto truePeak(double expected, std::vector<float> (*make)(std::uint32_t, int), int variant) {
  return [=](std::uint32_t sampleRate) {
    const auto samples = make(sampleRate, variant);
    LoudnessProcessor meter(sampleRate, 2);
    meter.updateTruePeak(std::vector<const float*>(2, samples.data()), samples.size());
    meter.flushPartialBlock();
    return std::vector<Reading>{{expected, static_cast<double>(meter.truePeakDB())}};
  };
}

auto range(double expected, const std::vector<double>& levels) {
  return [=](std::uint32_t sampleRate) {
    Segments segments;
    for (const double level : levels) segments.push_back({20, level});
    return std::vector<Reading>{{expected, measureStereo(sampleRate, segments).range}};
  };
}

void addLoudnessCases(std::vector<Case>& list) {
  const auto add = [&list](int number, std::string signal, std::string required, auto measureCase) {
    list.push_back({"3341",
                    number,
                    std::move(signal),
                    std::move(required),
                    0.1,
                    0.1,
                    {44100, 48000, 96000, 192000},
                    std::move(measureCase)});
  };
  add(1, "20 s at −23", "M, S, I −23", steadyTone(-23));
  add(2, "20 s at −33", "M, S, I −33", steadyTone(-33));
  add(3, "10 s −36, 60 s −23, 10 s −36", "I −23", integrated({{10, -36}, {60, -23}, {10, -36}}));
  add(4, "10 s −72, 10 s −36, 60 s −23, 10 s −36, 10 s −72", "I −23",
      integrated({{10, -72}, {10, -36}, {60, -23}, {10, -36}, {10, -72}}));
  add(5, "20 s −26, 20.1 s −20, 20 s −26", "I −23",
      integrated({{20, -26}, {20.1, -20}, {20, -26}}));
  add(6, "5.0, 20 s: L R −28, C −24, Ls Rs −30", "I −23", fiveChannels);
  add(9, "(1.34 s −20, 1.66 s −30) × 5", "S −23 from 3 s on",
      constantCurve(kShortTerm, 29, repeated({{1.34, -20}, {1.66, -30}}, 5)));
  add(10, "20 files: i × 0.15 s silence, 3 s −23, 1 s silence", "highest S −23",
      maximumPerFile(kShortTerm, 0.15, 3));
  add(11, "20 × (i × 0.15 s silence, 3 s −38 + i, silence to 6 s)", "highest S −38 … −19",
      maximumPerStretch(kShortTerm, 0.15, 3));
  add(12, "(0.18 s −20, 0.22 s −30) × 25", "M −23 from 1 s on",
      constantCurve(kMomentary, 9, repeated({{0.18, -20}, {0.22, -30}}, 25)));
  add(13, "20 files: i × 20 ms silence, 0.4 s −23, 1 s silence", "highest M −23",
      maximumPerFile(kMomentary, 0.02, 0.4));
  add(14, "20 × (i × 20 ms silence, 0.4 s −38 + i, silence to 0.8 s)", "highest M −38 … −19",
      maximumPerStretch(kMomentary, 0.02, 0.4));
}

void addTruePeakCases(std::vector<Case>& list) {
  const auto add = [&list](int number, std::string signal, std::string required, auto measureCase) {
    list.push_back({"3341",
                    number,
                    std::move(signal),
                    std::move(required),
                    0.4,
                    0.2,
                    {44100, 48000},
                    std::move(measureCase)});
  };
  const std::vector<std::string> tones{"fs/4, amplitude 0.5, 0°", "fs/4, amplitude 0.5, 45°",
                                       "fs/6, amplitude 0.5, 60°", "fs/8, amplitude 0.5, 67.5°",
                                       "fs/4, amplitude 1.41, 45°"};
  for (int i = 0; i < 5; ++i)
    add(15 + i, tones[static_cast<std::size_t>(i)], i < 4 ? "true peak −6" : "true peak +3",
        truePeak(i < 4 ? -6.0 : 3.0, lockedToneSignal, i));
  for (int offset = 0; offset < 4; ++offset)
    add(20 + offset,
        "fs/6, amplitude 0.5, with one period of fs/4, amplitude 1; from 4 × fs, offset " +
            std::to_string(offset),
        "true peak 0", truePeak(0.0, splicedToneSignal, offset));
}

void addRangeCases(std::vector<Case>& list) {
  const auto add = [&list](int number, std::string signal, std::string required, auto measureCase) {
    list.push_back({"3342",
                    number,
                    std::move(signal),
                    std::move(required),
                    1.0,
                    1.0,
                    {44100, 48000, 96000, 192000},
                    std::move(measureCase)});
  };
  add(1, "20 s each at −20, −30", "LRA 10", range(10, {-20, -30}));
  add(2, "20 s each at −20, −15", "LRA 5", range(5, {-20, -15}));
  add(3, "20 s each at −40, −20", "LRA 20", range(20, {-40, -20}));
  add(4, "20 s each at −50, −35, −20, −35, −50", "LRA 15", range(15, {-50, -35, -20, -35, -50}));
}

}  // namespace

const std::vector<Case>& cases() {
  static const std::vector<Case> list = [] {
    std::vector<Case> all;
    addLoudnessCases(all);
    addTruePeakCases(all);
    addRangeCases(all);
    return all;
  }();
  return list;
}

Reading farthest(const std::vector<Reading>& readings) {
  return *std::max_element(readings.begin(), readings.end(), [](const auto& a, const auto& b) {
    return std::abs(a.deviation()) < std::abs(b.deviation());
  });
}

}  // namespace orvane::core::conformance
