#pragma once

#include <cstdint>
#include <vector>

namespace orvane::core::conformance {

/// EBU Tech 3341, cases 15 … 19: a tone locked to the sample rate at a given phase, 3.2 s, with
/// fades. `variant` 0 … 4 is the case less 15.
std::vector<float> lockedToneSignal(std::uint32_t sampleRate, int variant);

/// EBU Tech 3341, cases 20 … 23: made at four times the rate, a tone of a sixth of the rate into
/// which one period of a quarter of the rate, at twice the level, is inserted without a break in
/// phase; band-limited, then every fourth sample from `offset` (0 … 3) on, with fades.
std::vector<float> splicedToneSignal(std::uint32_t sampleRate, int offset);

}  // namespace orvane::core::conformance
