#include "tests/support/signals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <numeric>

#include "tests/support/random.h"

namespace orvane::test {
namespace {

constexpr double kTwoPi = 2.0 * std::numbers::pi;

double amplitudeOf(double levelDBFS) {
  return std::pow(10.0, levelDBFS / 20.0);
}

/// One period of the repeating sequence sin(2π · n · cycles ÷ period + phase), or its first `most`
/// values.
std::vector<double> sineTable(std::uint64_t cycles, std::uint64_t period, double phase,
                              std::size_t most) {
  const std::uint64_t common = std::gcd(cycles, period);
  std::vector<double> table(std::min<std::size_t>(period / common, most));
  for (std::size_t n = 0; n < table.size(); ++n) {
    const auto turn = static_cast<double>(n * cycles % period) / static_cast<double>(period);
    table[n] = std::sin(kTwoPi * turn + phase);
  }
  return table;
}

/// Modified Bessel function of the first kind, order 0.
double besselI0(double x) {
  double sum = 1, term = 1;
  for (int k = 1; term > 1e-17 * sum; ++k) {
    term *= (x / (2 * k)) * (x / (2 * k));
    sum += term;
  }
  return sum;
}

/// A plucked string: harmonics that fall off, read from a table at the note's pitch.
class Note {
 public:
  static constexpr std::size_t kTableSize = 2048;
  using Table = std::array<float, kTableSize>;

  static Table tableOf(Random& random) {
    Table table{};
    for (int harmonic = 1; harmonic <= 6; ++harmonic) {
      const double share = random.between(0.3, 1.0) / (harmonic * 2.6);
      for (std::size_t i = 0; i < kTableSize; ++i)
        table[i] += static_cast<float>(
            share * std::sin(kTwoPi * static_cast<double>(i) * harmonic / kTableSize));
    }
    return table;
  }

  Note(const Table& table, double hertz, double sampleRate, float level)
      : table_(&table),
        step_(static_cast<std::uint32_t>(hertz / sampleRate * 0x1p32)),
        level_(level),
        decay_(static_cast<float>(std::exp(-3.0 / sampleRate))) {}

  float next() {
    phase_ += step_;
    level_ *= decay_;
    return level_ * (*table_)[phase_ >> 21];
  }

 private:
  const Table* table_;
  std::uint32_t phase_ = 0;
  std::uint32_t step_;
  float level_;
  float decay_;
};

}  // namespace

std::vector<float> tone(std::uint32_t sampleRate, std::uint32_t hertz,
                        std::span<const ToneSegment> segments) {
  const std::vector<double> sine = sineTable(hertz, sampleRate, 0.0, sampleRate);
  const auto frameAt = [sampleRate](double seconds) {
    return static_cast<std::size_t>(std::llround(seconds * sampleRate));
  };
  double seconds = 0;
  for (const ToneSegment& segment : segments) seconds += segment.seconds;
  std::vector<float> samples;
  samples.reserve(frameAt(seconds));

  seconds = 0;
  std::vector<float> period(sine.size());
  for (const ToneSegment& segment : segments) {
    seconds += segment.seconds;
    const std::size_t end = frameAt(seconds);
    const double amplitude = amplitudeOf(segment.levelDBFS);
    std::transform(sine.begin(), sine.end(), period.begin(),
                   [amplitude](double x) { return static_cast<float>(amplitude * x); });
    while (samples.size() < end) {
      const std::size_t phase = samples.size() % period.size();
      const std::size_t count = std::min(end - samples.size(), period.size() - phase);
      const auto first = period.begin() + static_cast<std::ptrdiff_t>(phase);
      samples.insert(samples.end(), first, first + static_cast<std::ptrdiff_t>(count));
    }
  }
  return samples;
}

std::vector<float> lockedSine(std::size_t frames, std::uint32_t cycles, std::uint32_t period,
                              double phase, double amplitude) {
  const std::vector<double> sine = sineTable(cycles, period, phase, frames);
  std::vector<float> samples(frames);
  for (std::size_t n = 0; n < frames; ++n)
    samples[n] = static_cast<float>(amplitude * sine[n % sine.size()]);
  return samples;
}

std::vector<float> whiteNoise(std::uint64_t seed, std::size_t frames, float amplitude) {
  Random random(seed);
  std::vector<float> samples(frames);
  for (float& x : samples) x = amplitude * static_cast<float>(random.between(-1, 1));
  return samples;
}

std::vector<float> pinkNoise(std::uint64_t seed, std::size_t frames, float amplitude) {
  // Thirteen random values are summed; value k changes every 2^k samples, so each adds its octave.
  constexpr std::size_t kOctaves = 13;
  Random random(seed);
  std::array<double, kOctaves> held{};
  for (double& value : held) value = random.between(-1, 1);
  std::vector<float> samples(frames);
  for (std::size_t n = 0; n < frames; ++n) {
    for (std::size_t k = 0; k < kOctaves && n % (std::size_t{1} << k) == 0; ++k)
      held[k] = random.between(-1, 1);
    const double sum = std::accumulate(held.begin(), held.end(), 0.0);
    samples[n] = amplitude * static_cast<float>(sum / kOctaves);
  }
  return samples;
}

std::vector<float> noiseBursts(std::uint64_t seed, std::uint32_t sampleRate, std::size_t frames) {
  Random random(seed);
  std::vector<float> samples;
  const auto length = [&] {
    return static_cast<std::size_t>(random.between(0.03, 0.4) * sampleRate);
  };
  while (samples.size() < frames) {
    const double amplitude = amplitudeOf(random.between(-50, 0));
    for (std::size_t left = length(); left > 0; --left)
      samples.push_back(static_cast<float>(amplitude * random.between(-1, 1)));
    samples.resize(samples.size() + length());
  }
  samples.resize(frames);
  return samples;
}

Programme music(std::uint64_t seed, std::uint32_t sampleRate, std::size_t channelCount,
                double seconds) {
  Random random(seed);
  const auto frames = static_cast<std::size_t>(std::llround(seconds * sampleRate));
  Programme programme{static_cast<double>(sampleRate), {}};
  programme.channels.assign(channelCount, std::vector<float>(frames));
  const Note::Table lowTable = Note::tableOf(random), highTable = Note::tableOf(random);
  std::vector<float> lowGain(channelCount), highGain(channelCount), drumGain(channelCount);
  for (std::size_t c = 0; c < channelCount; ++c) {
    lowGain[c] = static_cast<float>(random.between(0.2, 0.45));
    highGain[c] = static_cast<float>(random.between(0.05, 0.35));
    drumGain[c] = static_cast<float>(random.between(0.1, 0.5));
  }

  const auto beat = static_cast<std::size_t>(0.25 * sampleRate);
  const auto drumDecay = static_cast<float>(std::exp(-60.0 / sampleRate));
  double section = 0.7;
  for (std::size_t begin = 0, index = 0; begin < frames; begin += beat, ++index) {
    if (index % 12 == 0) section = amplitudeOf(random.between(-26, 0));
    const auto level = [&](double low) {
      return static_cast<float>(section * random.between(low, 1));
    };
    const auto pitch = [&](double base) {
      return base * std::exp2(static_cast<double>(random.below(12)) / 12);
    };
    Note low(lowTable, pitch(55), sampleRate, level(0.4));
    Note high(highTable, pitch(440), sampleRate, level(0.1));
    float drum = index % 2 == 0 ? level(0.5) : level(0.0) * 0.3F;
    for (std::size_t n = begin; n < std::min(frames, begin + beat); ++n) {
      const float x = low.next(), y = high.next();
      const float z = drum * static_cast<float>(random.between(-1, 1));
      drum *= drumDecay;
      for (std::size_t c = 0; c < channelCount; ++c)
        programme.channels[c][n] = lowGain[c] * x + highGain[c] * y + drumGain[c] * z;
    }
  }
  return programme;
}

std::vector<float> bandLimited(std::span<const float> samples, double edge) {
  // A Kaiser window with 80 dB of attenuation: β and the length follow from the transition's width.
  constexpr double kBeta = 7.857;
  const double transition = 0.14 * edge;
  const double cutoff = edge - transition / 2;
  const auto half = static_cast<std::ptrdiff_t>(std::ceil(5.02 / transition / 2));
  std::vector<double> taps;
  for (std::ptrdiff_t k = -half; k <= half; ++k) {
    const double x = static_cast<double>(k) / static_cast<double>(half);
    const double t = std::numbers::pi * static_cast<double>(k);
    const double sinc = k == 0 ? 2 * cutoff : std::sin(2 * cutoff * t) / t;
    taps.push_back(sinc * besselI0(kBeta * std::sqrt(1 - x * x)) / besselI0(kBeta));
  }
  const auto count = static_cast<std::ptrdiff_t>(samples.size());
  std::vector<float> result(samples.size());
  for (std::ptrdiff_t n = 0; n < count; ++n) {
    double sum = 0;
    const std::ptrdiff_t last = std::min(half, n), first = std::max(-half, n - count + 1);
    for (std::ptrdiff_t k = first; k <= last; ++k)
      sum += taps[static_cast<std::size_t>(k + half)] *
             static_cast<double>(samples[static_cast<std::size_t>(n - k)]);
    result[static_cast<std::size_t>(n)] = static_cast<float>(sum);
  }
  return result;
}

void overdrive(std::vector<float>& samples, float gain) {
  for (float& x : samples) x = std::clamp(gain * x, -1.0F, 1.0F);
}

void offsetBy(std::vector<float>& samples, float constant) {
  for (float& x : samples) x += constant;
}

void fadeEnds(std::vector<float>& samples, std::size_t frames) {
  for (std::size_t n = 0; n < std::min(frames, samples.size()); ++n) {
    const float gain = static_cast<float>(n) / static_cast<float>(frames);
    samples[n] *= gain;
    samples[samples.size() - 1 - n] *= gain;
  }
}

}  // namespace orvane::test
