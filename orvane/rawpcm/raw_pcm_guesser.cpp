#include "orvane/rawpcm/raw_pcm_guesser.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/signal_kernels.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"
#include "orvane/rawpcm/raw_pcm_reader.h"

namespace orvane::RawPCMGuesser {
namespace {

constexpr float kNoScore = -1;

std::int64_t previewFrames(double seconds, double sampleRate) {
  constexpr double kBound = 0x1p63;
  const double frames = std::trunc(seconds * sampleRate);
  precondition(frames >= -kBound && frames < kBound, "the frames of a preview must fit 64 bits");
  return std::max<std::int64_t>(static_cast<std::int64_t>(frames), 1);
}

/// `decode` gives the start of the file as a format declares it, or throws `RawPCMImportError`.
template <typename Decode>
std::vector<Candidate> rankDecoded(std::int64_t fileSize, std::span<const RawPCMFormat> formats,
                                   double previewSeconds, const Execution& execution,
                                   Decode decode) {
  std::vector<std::optional<Candidate>> scored(formats.size());
  parallelFor(execution.threadCount, formats.size(), [&](std::size_t i) {
    const RawPCMFormat& format = formats[i];
    if (!format.frameCount(fileSize)) return;
    const auto frames = previewFrames(previewSeconds, format.sampleRate);
    try {
      const std::shared_ptr<PCMBuffer> preview = decode(format, frames);
      scored[i] = Candidate{format, lag1Score(*preview)};
      if (execution.onPreview) execution.onPreview(format, *preview);
    } catch (const RawPCMImportError&) {  // is not proposed
    }
  });
  std::vector<Candidate> ranked;
  for (const auto& candidate : scored)
    if (candidate) ranked.push_back(*candidate);
  std::stable_sort(ranked.begin(), ranked.end(),
                   [](const Candidate& a, const Candidate& b) { return a.score > b.score; });
  return ranked;
}

/// Not finite when the samples are not.
float lag1Correlation(const float* samples, std::size_t count) {
  // Below it a channel is silent.
  constexpr float kLeastEnergy = 1e-12F;
  const auto sums = SignalKernels::pairStatistics(samples, samples + 1, count - 1);
  const auto dot = static_cast<float>(sums.dot);
  // In single precision, in which the samples of a wrong encoding overflow; what comes of that is
  // not taken for silence.
  const float energy = std::sqrt(static_cast<float>(sums.left.sumOfSquares) *
                                 static_cast<float>(sums.right.sumOfSquares));
  return energy <= kLeastEnergy ? 0 : dot / energy;
}

}  // namespace

std::vector<RawPCMFormat> candidateGrid(double sampleRate, std::int64_t channelCount,
                                        std::int64_t headerSkipBytes) {
  std::vector<RawPCMFormat> grid;
  for (const auto encoding : kAllRawPCMEncodings)
    for (const auto endianness : kAllRawPCMEndiannesses)
      if (endiannessMatters(encoding) || endianness == RawPCMFormat::Endianness::little)
        grid.push_back({.sampleRate = sampleRate,
                        .channelCount = channelCount,
                        .encoding = encoding,
                        .endianness = endianness,
                        .headerSkipBytes = headerSkipBytes});
  return grid;
}

std::vector<Candidate> rank(const std::filesystem::path& url,
                            std::span<const RawPCMFormat> candidates, double previewSeconds,
                            const Execution& execution) {
  try {
    const auto size = static_cast<std::int64_t>(InputFile(url).size());
    return rankDecoded(size, candidates, previewSeconds, execution,
                       [&](const RawPCMFormat& format, std::int64_t frames) {
                         return RawPCMReader::read(url, format, frames);
                       });
  } catch (const PlatformError&) {
    return {};
  }
}

std::vector<Candidate> rank(std::span<const std::byte> data,
                            std::span<const RawPCMFormat> candidates, double previewSeconds,
                            const Execution& execution) {
  return rankDecoded(static_cast<std::int64_t>(data.size()), candidates, previewSeconds, execution,
                     [&](const RawPCMFormat& format, std::int64_t frames) {
                       return RawPCMReader::read(data, format, frames);
                     });
}

float lag1Score(const PCMBuffer& buffer) {
  constexpr std::uint32_t kFewestFrames = 17;  // fewer are alike by chance
  if (buffer.channelCount() == 0 || buffer.frameLength() < kFewestFrames) return kNoScore;
  float sum = 0;
  for (std::uint32_t c = 0; c < buffer.channelCount(); ++c) {
    const float correlation = lag1Correlation(buffer.channel(c), buffer.frameLength());
    if (!std::isfinite(correlation)) return kNoScore;
    sum += correlation;
  }
  return sum / static_cast<float>(buffer.channelCount());
}

}  // namespace orvane::RawPCMGuesser
