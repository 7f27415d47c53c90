#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "tests/support/programme.h"

/// Signal makers. All are deterministic; levels are peak levels in dBFS.
namespace orvane::test {

inline constexpr double kSilentLevel = -std::numeric_limits<double>::infinity();

/// A stretch of a tone.
struct ToneSegment {
  double seconds = 0;
  double levelDBFS = kSilentLevel;
};

/// A sine of constant frequency that runs through the segments without a break. The phase of each
/// sample comes from integers: it does not drift, however long the signal is.
std::vector<float> tone(std::uint32_t sampleRate, std::uint32_t hertz,
                        std::span<const ToneSegment> segments);

/// `cycles` periods in `period` samples, amplitude 1 at level 0, from the given phase (radians) on.
std::vector<float> lockedSine(std::size_t frames, std::uint32_t cycles, std::uint32_t period,
                              double phase, double amplitude);

std::vector<float> whiteNoise(std::uint64_t seed, std::size_t frames, float amplitude);

/// Equal power per octave over thirteen octaves; peaks just below `amplitude`.
std::vector<float> pinkNoise(std::uint64_t seed, std::size_t frames, float amplitude);

/// Noise of 30 … 400 ms with as long silences between, at levels from −50 dB to full.
std::vector<float> noiseBursts(std::uint64_t seed, std::uint32_t sampleRate, std::size_t frames);

/// Harmonic notes that decay, over drum-like transients, louder and softer by the section: two
/// instruments with a place between the channels each. Peaks reach about 0.9.
Programme music(std::uint64_t seed, std::uint32_t sampleRate, std::size_t channelCount,
                double seconds);

/// Removes what lies above `edge` (a share of the sample rate, below 0.5) by at least 80 dB; what
/// lies below 0.86 × `edge` stays.
std::vector<float> bandLimited(std::span<const float> samples, double edge);

/// Raises the level and cuts off what leaves ±1.
void overdrive(std::vector<float>& samples, float gain);

/// Adds a constant.
void offsetBy(std::vector<float>& samples, float constant);

/// Linear fades at both ends.
void fadeEnds(std::vector<float>& samples, std::size_t frames);

}  // namespace orvane::test
