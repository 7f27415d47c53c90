// Made by: python3 tools/design_true_peak_filter.py. Edit that.
#pragma once

#include <array>
#include <cstddef>

namespace orvane::core {

/// Samples that one interpolated value is made of.
inline constexpr std::size_t kUpsamplerTaps = 14;

/// Estimates at 1/4, 2/4 and 3/4 of the way from sample 6 to sample 7 of the window.
inline constexpr std::array<std::array<float, kUpsamplerTaps>, 3> kUpsamplerFilters = {{
    {{0.00974495709F, -0.0153329959F, 0.0272468012F, -0.0466493405F, 0.0825280324F, -0.167831391F,
      0.891970575F, 0.29821828F, -0.120513231F, 0.0678259879F, -0.0417641215F, 0.0251217764F,
      -0.0142373955F, 0.00913540274F}},
    {{0.013340544F, -0.0208385661F, 0.0368583798F, -0.0620607585F, 0.105090879F, -0.197859466F,
      0.630036294F, 0.630036294F, -0.197859466F, 0.105090879F, -0.0620607585F, 0.0368583798F,
      -0.0208385661F, 0.013340544F}},
    {{0.00913540274F, -0.0142373955F, 0.0251217764F, -0.0417641215F, 0.0678259879F, -0.120513231F,
      0.29821828F, 0.891970575F, -0.167831391F, 0.0825280324F, -0.0466493405F, 0.0272468012F,
      -0.0153329959F, 0.00974495709F}},
}};

}  // namespace orvane::core
