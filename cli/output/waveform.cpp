#include "cli/output/waveform.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "orvane/platform/signal_kernels.h"

namespace orvane::cli {
namespace {

constexpr std::array kBars = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};

/// An eighth for each 6 dB.
double levelOf(float peak) {
  constexpr double kRange = 48;  // dB
  return 1 + 20 * std::log10(static_cast<double>(peak)) / kRange;
}

}  // namespace

const char* levelBar(double level) {
  const double eighths = std::ceil(level * static_cast<double>(kBars.size()));
  if (!(eighths > 1)) return kBars.front();
  return kBars[static_cast<std::size_t>(std::min(eighths, static_cast<double>(kBars.size()))) - 1];
}

std::string waveform(const PCMBuffer& audio, std::size_t columns) {
  const std::size_t frames = audio.frameLength();
  const std::size_t count = std::min(columns, frames);
  std::string text;
  for (std::size_t column = 0; column < count; ++column) {
    const std::size_t begin = frames * column / count, end = frames * (column + 1) / count;
    float peak = 0;
    for (std::uint32_t c = 0; c < audio.channelCount(); ++c)
      peak = std::max(peak, SignalKernels::maximumMagnitude(audio.channel(c) + begin, end - begin));
    text += levelBar(levelOf(peak));
  }
  return text;
}

}  // namespace orvane::cli
