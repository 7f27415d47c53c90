// Made by: python3 tools/design_true_peak_filter.py. Edit that.
#pragma once

#include <array>
#include <cstddef>

namespace orvane::core {

// clang-format off

/// Samples that one interpolated value is made of at ×4.
inline constexpr std::size_t kUpsamplerTaps = 12;

/// Estimates at 1/4, 2/4 and 3/4 of the way from sample 5 to sample 6 of the window.
inline constexpr std::array<std::array<float, kUpsamplerTaps>, 3> kUpsamplerFilters = {{
    {{-0.00345591677F, 0.0131046267F, -0.0331893054F, 0.0718884425F,
      -0.163212642F, 0.896837677F, 0.289778954F, -0.1057663F,
      0.0492568658F, -0.021522462F, 0.00724069316F, -0.00138547921F}},
    {{-0.00314892522F, 0.0139817437F, -0.0380319522F, 0.084214397F,
      -0.184024415F, 0.626819488F, 0.626819488F, -0.184024415F,
      0.084214397F, -0.0380319522F, 0.0139817437F, -0.00314892522F}},
    {{-0.00138547921F, 0.00724069316F, -0.021522462F, 0.0492568658F,
      -0.1057663F, 0.289778954F, 0.896837677F, -0.163212642F,
      0.0718884425F, -0.0331893054F, 0.0131046267F, -0.00345591677F}},
}};

/// Samples that one interpolated value is made of at ×2.
inline constexpr std::size_t kHalfwayTaps = 24;

/// Estimate halfway from sample 11 to sample 12 of the window.
inline constexpr std::array<float, kHalfwayTaps> kHalfwayFilter = {
    {-0.000803691306F, 0.00207735867F, -0.00458672753F, 0.00860046487F,
     -0.0144627757F, 0.0226709467F, -0.034042024F, 0.050105077F,
     -0.0741671132F, 0.114934401F, -0.204607305F, 0.634058719F,
     0.634058719F, -0.204607305F, 0.114934401F, -0.0741671132F,
     0.050105077F, -0.034042024F, 0.0226709467F, -0.0144627757F,
     0.00860046487F, -0.00458672753F, 0.00207735867F, -0.000803691306F}};

// clang-format on

}  // namespace orvane::core
