#include "tests/reference/loudness_reference.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/core/loudness/k_weighting.h"

namespace orvane::test::reference {
namespace {

/// y = b0·x + b1·x₁ + b2·x₂ − a1·y₁ − a2·y₂
std::vector<double> section(const std::vector<double>& input, double b0, double b1, double b2,
                            double a1, double a2) {
  std::vector<double> output;
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
  for (const double x : input) {
    const double y = b0 * x + b1 * x1 + b2 * x2 - a1 * y1 - a2 * y2;
    x2 = x1;
    x1 = x;
    y2 = y1;
    y1 = y;
    output.push_back(y);
  }
  return output;
}

double loudness(double power) {
  return power > 0 ? -0.691 + 10 * std::log10(power) : -std::numeric_limits<double>::infinity();
}

double mean(const std::vector<double>& values) {
  double sum = 0;
  for (const double value : values) sum += value;
  return values.empty() ? 0.0 : sum / static_cast<double>(values.size());
}

std::vector<double> survivors(std::span<const double> blockPowers) {
  std::vector<double> audible;
  for (const double power : blockPowers)
    if (loudness(power) > -70) audible.push_back(power);
  const double gate = loudness(mean(audible)) - 10;
  std::vector<double> kept;
  for (const double power : audible)
    if (loudness(power) > gate) kept.push_back(power);
  return kept;
}

/// Weighted K-energy of each frame, all channels together.
std::vector<double> frameEnergies(const Programme& programme, std::span<const float> weights) {
  std::vector<double> energies(programme.frameCount());
  for (std::size_t c = 0; c < programme.channels.size(); ++c) {
    if (weights[c] == 0) continue;
    const auto filtered = kWeighted(programme.channels[c], programme.sampleRate);
    for (std::size_t n = 0; n < filtered.size(); ++n)
      energies[n] += static_cast<double>(weights[c]) * filtered[n] * filtered[n];
  }
  return energies;
}

/// Energy of the frames [begin, end); those outside of the programme are silence.
class Energies {
 public:
  explicit Energies(std::vector<double> frames) : frames_(std::move(frames)) {}

  double of(std::ptrdiff_t begin, std::ptrdiff_t end) const {
    double sum = 0;
    for (auto n = std::max<std::ptrdiff_t>(0, begin); n < std::min(end, count()); ++n)
      sum += frames_[static_cast<std::size_t>(n)];
    return sum;
  }
  std::ptrdiff_t count() const { return static_cast<std::ptrdiff_t>(frames_.size()); }

 private:
  std::vector<double> frames_;
};

/// The loudest 400 ms that end at a tenth of the step [begin, begin + step) and begin to be heard
/// before the programme's end.
double loudestInStep(const Energies& energies, std::ptrdiff_t begin, std::ptrdiff_t step) {
  double loudest = 0;
  for (std::ptrdiff_t tick = 0; tick < 10; ++tick) {
    if (begin + step * tick / 10 >= energies.count()) break;
    const std::ptrdiff_t end = begin + step * (tick + 1) / 10;
    loudest = std::max(loudest, energies.of(end - 4 * step, end));
  }
  return loudest / static_cast<double>(4 * step);
}

}  // namespace

std::vector<double> kWeighted(std::span<const float> samples, double sampleRate) {
  std::vector<double> input;
  for (const float x : samples) input.push_back(std::isfinite(x) ? static_cast<double>(x) : 0.0);
  const core::KWeighting k = core::designKWeighting(sampleRate);
  const auto shelved = section(input, k.shelfB0, k.shelfB1, k.shelfB2, k.shelfA1, k.shelfA2);
  return section(shelved, 1, -2, 1, k.highPassA1, k.highPassA2);
}

Loudness measureLoudness(const Programme& programme, std::span<const float> weights) {
  const Energies energies(frameEnergies(programme, weights));
  const auto step = static_cast<std::ptrdiff_t>(std::llround(programme.sampleRate * 0.1));
  const std::ptrdiff_t frames = energies.count();
  Loudness result;
  for (std::ptrdiff_t end = 4 * step; end <= frames; end += step)
    result.blockPowers.push_back(energies.of(end - 4 * step, end) / static_cast<double>(4 * step));
  if (frames > 0 && frames < 4 * step)
    result.blockPowers.push_back(energies.of(0, frames) / static_cast<double>(frames));

  std::vector<double> wholeWindows;
  for (std::ptrdiff_t begin = 0; begin < frames; begin += step) {
    const std::ptrdiff_t end = begin + step;
    const double shortTerm = energies.of(end - 30 * step, end) / static_cast<double>(30 * step);
    if (end >= 30 * step && end <= frames) wholeWindows.push_back(shortTerm);
    result.momentary.push_back(loudness(loudestInStep(energies, begin, step)));
    result.shortTerm.push_back(loudness(shortTerm));
    const auto complete = std::max<std::ptrdiff_t>(0, std::min(end, frames) / step - 3);
    result.integrated.push_back(
        gatedLUFS(std::span(result.blockPowers).first(static_cast<std::size_t>(complete))));
  }
  if (frames > 0 && frames < 4 * step) result.integrated.back() = gatedLUFS(result.blockPowers);
  result.integratedLUFS = gatedLUFS(result.blockPowers);
  result.rangeLU = loudnessRange(wholeWindows);
  return result;
}

double gatedLUFS(std::span<const double> blockPowers) {
  return loudness(mean(survivors(blockPowers)));
}

std::size_t gatedBlockCount(std::span<const double> blockPowers) {
  return survivors(blockPowers).size();
}

double loudnessRange(std::span<const double> windowPowers) {
  std::vector<double> audible;
  for (const double power : windowPowers)
    if (loudness(power) >= -70) audible.push_back(power);
  const double gate = loudness(mean(audible)) - 20;
  std::vector<double> levels;
  for (const double power : audible)
    if (loudness(power) >= gate) levels.push_back(loudness(power));
  if (levels.empty()) return 0;
  std::sort(levels.begin(), levels.end());
  const auto percentile = [&levels](double p) {
    const double rank = std::round(static_cast<double>(levels.size() - 1) * p / 100 + 1);
    return levels[static_cast<std::size_t>(rank) - 1];
  };
  return percentile(95) - percentile(10);
}

}  // namespace orvane::test::reference
