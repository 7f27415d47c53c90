#include "orvane/core/generator/noise.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "orvane/core/generator/inverse_fourier_transform.h"
#include "orvane/core/generator/reproducible_math.h"

namespace orvane::core {
namespace {

using ReproducibleMath::Phase;

/// The step of the sequence, the odd number nearest to 2^64 ÷ the golden ratio (Steele, Lea and
/// Flood, "Fast splittable pseudorandom number generators", 2014).
constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15;

/// The finaliser of the same paper's SplitMix64: a one-to-one scrambling of 64 bits.
std::uint64_t scrambled(std::uint64_t x) noexcept {
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EB;
  return x ^ (x >> 31);
}

/// Below the octave band of 16 Hz, the lowest that is in use (it begins at 11.2 Hz, IEC 61260-1).
/// Without a bound pink and brown noise would be mostly an offset that wanders.
constexpr double kLowestHertz = 10;

/// Noise with the given amplitude per frequency (Hz).
///
/// A block of independent Gaussian spectral values, each weighted by its amplitude, is Gaussian
/// noise of exactly that spectrum. Blocks of at least a second, which overlap by half under windows
/// whose squares add up to 1, follow one another without a seam. The real and the imaginary part
/// of one transform are two blocks.
template <typename Amplitude>
std::vector<double> shaped(GaussianSource source, double sampleRate, std::size_t frames,
                           Amplitude amplitudeAt) {
  const std::size_t size = std::bit_ceil(static_cast<std::size_t>(std::ceil(sampleRate)));
  const std::size_t hop = size / 2;
  const InverseFourierTransform transform(size);
  std::vector<double> window(size), amplitudes(size);
  for (std::size_t i = 0; i < size; ++i) {
    const double bin = static_cast<double>(std::min(i, size - i));
    const double hertz = bin * sampleRate / static_cast<double>(size);
    amplitudes[i] = hertz < kLowestHertz ? 0 : amplitudeAt(hertz);
    window[i] = ReproducibleMath::sine(ReproducibleMath::phaseOfTurns(
        (static_cast<double>(i) + 0.5) / (2 * static_cast<double>(size))));
  }

  std::vector<double> samples(frames);
  // `middle` is the frame where the block's first half ends.
  const auto add = [&](const std::vector<double>& block, std::size_t middle) {
    for (std::size_t i = middle == 0 ? hop : 0; i < size && middle + i - hop < frames; ++i)
      samples[middle + i - hop] += window[i] * block[i];
  };
  SplitComplex blocks{std::vector<double>(size), std::vector<double>(size)};
  for (std::size_t middle = 0; middle < frames + hop; middle += 2 * hop) {
    for (std::size_t i = 0; i < size; ++i) {
      const auto [first, second] = source.next();
      blocks.real[i] = amplitudes[i] * first;
      blocks.imaginary[i] = amplitudes[i] * second;
    }
    transform.run(blocks);
    add(blocks.real, middle);
    add(blocks.imaginary, middle + hop);
  }
  return samples;
}

}  // namespace

GaussianSource::GaussianSource(std::uint64_t seed, std::uint64_t stream)
    : state_(scrambled(scrambled(seed + kStep) + stream)) {}

std::pair<double, double> GaussianSource::next() noexcept {
  // Box and Muller, "A note on the generation of random normal deviates", 1958.
  const double chance = static_cast<double>((scrambled(state_ += kStep) >> 11) + 1) * 0x1p-53;
  const double radius = std::sqrt(-2 * std::numbers::ln2 * ReproducibleMath::log2(chance));
  const Phase angle = scrambled(state_ += kStep);
  return {radius * ReproducibleMath::cosine(angle), radius * ReproducibleMath::sine(angle)};
}

std::vector<double> Noise::white(GaussianSource source, std::size_t frames) {
  std::vector<double> samples(frames);
  for (std::size_t i = 0; i < frames; i += 2) {
    const auto [first, second] = source.next();
    samples[i] = first;
    if (i + 1 < frames) samples[i + 1] = second;
  }
  return samples;
}

std::vector<double> Noise::pink(GaussianSource source, double sampleRate, std::size_t frames) {
  return shaped(source, sampleRate, frames, [](double hertz) { return 1 / std::sqrt(hertz); });
}

std::vector<double> Noise::brown(GaussianSource source, double sampleRate, std::size_t frames) {
  return shaped(source, sampleRate, frames, [](double hertz) { return 1 / hertz; });
}

}  // namespace orvane::core
