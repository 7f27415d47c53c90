#pragma once

#include <span>
#include <vector>

namespace orvane::test::reference {

/// A list of filters, each over as many samples as it has taps.
using Filters = std::vector<std::vector<double>>;

/// The three filters of ×4, and the one of ×2.
Filters quarterFilters();
Filters halfwayFilter();

/// The largest magnitude per window: the window's last sample and what the filters give, summed in
/// double precision. The first window ends at the first sample, the last begins at the last sample;
/// outside there is silence. Non-finite samples count as 0.
std::vector<double> windowPeaks(std::span<const float> samples, const Filters& filters);

/// The largest interpolated magnitude of a programme's channel at its rate: ×4 below 96 kHz, ×2
/// below 192 kHz, else the sample peak.
double truePeak(std::span<const float> samples, double sampleRate);

double samplePeak(std::span<const float> samples);

}  // namespace orvane::test::reference
