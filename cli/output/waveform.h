#pragma once

#include <cstddef>
#include <string>

#include "orvane/platform/pcm_buffer.h"

namespace orvane::cli {

/// "▁" to "█" for 0 … 1, an eighth each; what lies outside counts as the end it lies at.
const char* levelBar(double level);

/// Audio as a row of up to `columns` bars, each for the highest sample of its part of any channel:
/// "▁" up to −42 dBFS, a step for each 6 dB, "█" above −6 dBFS. Noise makes an even row; sound
/// seldom does.
std::string waveform(const PCMBuffer& audio, std::size_t columns);

}  // namespace orvane::cli
