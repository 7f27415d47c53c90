// What the spectra of periodic signals hold: their partials in the right shares, and nothing else.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "orvane/core/generator/signal_generator.h"
#include "tests/core/generator/spectrum.h"

namespace orvane::core {
namespace {

constexpr std::size_t kFrames = 65'536;

/// A signal with `cycles` whole periods in `kFrames` frames, at full scale. With an odd number of
/// them every partial has a bin of its own, and every alias another one.
GeneratorSpec periodic(GeneratorWaveform waveform, double sampleRate, std::size_t cycles) {
  GeneratorSpec spec;
  spec.waveform = waveform;
  spec.sampleRate = sampleRate;
  spec.frequency = sampleRate * static_cast<double>(cycles) / static_cast<double>(kFrames);
  spec.durationSeconds = static_cast<double>(kFrames) / sampleRate;
  spec.levelDB = 0;
  return spec;
}

/// The share of a partial in a wave whose first one is 1.
double shareOf(GeneratorWaveform waveform, std::size_t partial) {
  const auto k = static_cast<double>(partial);
  switch (waveform) {
    case GeneratorWaveform::square:
      return partial % 2 == 0 ? 0 : 1 / k;
    case GeneratorWaveform::saw:
      return partial % 2 == 0 ? -1 / k : 1 / k;
    case GeneratorWaveform::triangle:
      return partial % 2 == 0 ? 0 : (partial % 4 == 1 ? 1 : -1) / (k * k);
    default:
      return partial == 1 ? 1 : 0;
  }
}

/// The largest deviation of any bin from what it should hold, relative to the first partial.
double largestError(const GeneratorSpec& spec, std::optional<std::uint32_t> cap = std::nullopt) {
  const auto spectrum = spectrumOf(SignalGenerator::render(spec, cap).front());
  const auto cycles = static_cast<std::size_t>(
      std::lround(spec.frequency / spec.sampleRate * static_cast<double>(kFrames)));
  // Each phase of the spectrum is that of a sine.
  const double first = std::abs(spectrum[cycles]);
  double error = 0;
  for (std::size_t bin = 0; bin < kFrames / 2; ++bin) {
    const std::size_t partial = bin % cycles == 0 ? bin / cycles : 0;
    const bool isThere = partial > 0 && partial <= cap.value_or(kFrames);
    const double expected = isThere ? shareOf(spec.waveform, partial) : 0;
    error = std::max(error, std::abs(spectrum[bin] / first - std::complex<double>(0, -expected)));
  }
  return error;
}

constexpr double kRates[] = {44'100, 48'000, 192'000};
/// From thousands of partials to a single one that lies next to half the sample rate.
constexpr std::size_t kCycles[] = {1, 3, 27, 1013, 8191, 10'923, 16'383, 16'385, 30'011, 32'767};

TEST(WaveformSpectrum, HoldsThePartialsAndNoAlias) {
  for (const auto waveform : {GeneratorWaveform::sine, GeneratorWaveform::square,
                              GeneratorWaveform::saw, GeneratorWaveform::triangle})
    for (const double rate : kRates)
      for (const std::size_t cycles : kCycles)
        // −140 dB; the rounding to 32-bit floats makes most of it.
        EXPECT_LT(largestError(periodic(waveform, rate, cycles)), 1e-7)
            << static_cast<int>(waveform) << " at " << rate << ", " << cycles;
}

TEST(WaveformSpectrum, EndsAtTheHarmonicCap) {
  for (const auto waveform :
       {GeneratorWaveform::square, GeneratorWaveform::saw, GeneratorWaveform::triangle})
    for (const std::uint32_t cap : {1U, 2U, 7U, 100'000U})
      EXPECT_LT(largestError(periodic(waveform, 48'000, 27), cap), 1e-7) << cap;
}

TEST(WaveformSpectrum, HasAsMuchOfEveryPartialOfClicks) {
  for (const double rate : kRates)
    for (const std::size_t cycles : kCycles) {
      auto spec = periodic(GeneratorWaveform::clickTrain, rate, cycles);
      spec.channelPhases = {72};
      const auto spectrum = spectrumOf(SignalGenerator::render(spec).front());
      const std::size_t partials = (kFrames / 2 - 1) / cycles;
      const double share = 2 / (1 + 2 * static_cast<double>(partials));
      for (std::size_t bin = 0; bin < kFrames / 2; ++bin)
        ASSERT_NEAR(std::abs(spectrum[bin]), bin % cycles == 0 ? share : 0, 1e-7)
            << rate << ", " << cycles << ", bin " << bin;
    }
}

TEST(WaveformSpectrum, HoldsTwoTonesAndNothingElse) {
  auto spec = periodic(GeneratorWaveform::dualTone, 48'000, 1013);
  spec.secondFrequency = 9001 * 48'000.0 / kFrames;
  spec.secondLevelDB = 20 * std::log10(0.25);
  const auto spectrum = spectrumOf(SignalGenerator::render(spec).front());
  for (std::size_t bin = 0; bin < spectrum.size(); ++bin)
    ASSERT_NEAR(std::abs(spectrum[bin]), bin == 1013 ? 0.8 : bin == 9001 ? 0.2 : 0, 1e-7) << bin;
}

/// The frequency by how far the phase of a tone comes in the time between two looks at it.
double frequencyOf(std::span<const float> samples, double sampleRate, double about) {
  const auto phaseAround = [&](std::size_t start, std::size_t frames) {
    std::complex<double> sum = 0;
    for (std::size_t n = start; n < start + frames; ++n) {
      const double place = static_cast<double>(n - start) / static_cast<double>(frames);
      const double window = 1 - std::cos(2 * std::numbers::pi * place);
      const double turns = about / sampleRate * static_cast<double>(n);
      sum +=
          window * static_cast<double>(samples[n]) * std::polar(1.0, -2 * std::numbers::pi * turns);
    }
    return std::arg(sum);
  };
  const std::size_t look = samples.size() / 4;
  const double turns =
      (phaseAround(samples.size() - look, look) - phaseAround(0, look)) / (2 * std::numbers::pi);
  return about +
         (turns - std::round(turns)) * sampleRate / static_cast<double>(samples.size() - look);
}

TEST(WaveformSpectrum, KeepsTheFrequency) {
  GeneratorSpec spec;
  for (const auto waveform : {GeneratorWaveform::sine, GeneratorWaveform::square,
                              GeneratorWaveform::saw, GeneratorWaveform::triangle})
    for (const double rate : kRates)
      for (const double hertz : {20.0, 440.1, 997.0, 19'999.9}) {
        spec.waveform = waveform;
        spec.sampleRate = rate;
        spec.frequency = hertz;
        const auto samples = SignalGenerator::render(spec).front();
        EXPECT_NEAR(frequencyOf(samples, rate, hertz) / hertz, 1, 1e-8)
            << static_cast<int>(waveform) << " at " << rate << ", " << hertz;
      }
}

}  // namespace
}  // namespace orvane::core
