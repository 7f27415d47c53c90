#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace orvane::test::reference {

/// The largest magnitude per window of 14 samples: the window's last sample and what the filters
/// `firstFilter`, `firstFilter + filterStep` … give, summed in double precision. Windows begin
/// before the first sample and end 13 samples after the last; outside there is silence. Non-finite
/// samples count as 0.
std::vector<double> windowPeaks(std::span<const float> samples, std::size_t firstFilter,
                                std::size_t filterStep);

/// The largest interpolated magnitude of a programme's channel at its rate: ×4 below 96 kHz, ×2
/// below 192 kHz, else the sample peak.
double truePeak(std::span<const float> samples, double sampleRate);

double samplePeak(std::span<const float> samples);

}  // namespace orvane::test::reference
