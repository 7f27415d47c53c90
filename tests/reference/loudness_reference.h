#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "tests/support/programme.h"

/// Loudness, as slowly and plainly as the standards describe it.
namespace orvane::test::reference {

/// Both K-weighting stages one after the other, each in direct form I. Non-finite samples count as
/// 0.
std::vector<double> kWeighted(std::span<const float> samples, double sampleRate);

/// Everything that the meter tells, in double precision. Levels are in LUFS.
struct Loudness {
  std::vector<double> blockPowers{};
  /// One entry per 100 ms step, a trailing partial one included.
  std::vector<double> momentary{}, shortTerm{}, integrated{};
  double integratedLUFS = 0;
  double rangeLU = 0;
};

Loudness measureLoudness(const Programme& programme, std::span<const float> weights);

/// The mean of the blocks that pass both gates of BS.1770-5, as loudness. The gates compare levels.
double gatedLUFS(std::span<const double> blockPowers);
std::size_t gatedBlockCount(std::span<const double> blockPowers);

/// EBU Tech 3342 from the powers of 3 s windows: sort, pick by the one-based rank of the text.
double loudnessRange(std::span<const double> windowPowers);

}  // namespace orvane::test::reference
