#include "orvane/rawpcm/raw_pcm_proposal.h"

#include <algorithm>
#include <numeric>
#include <span>

#include "orvane/platform/input_file.h"
#include "orvane/platform/precondition.h"

namespace orvane::RawPCMGuesser {
namespace {

/// Bytes that are whole frames of every encoding and channel count; samples have 1, 2, 3, 4 or 8.
std::size_t frameMultiple(const std::vector<std::int64_t>& channelCounts) {
  constexpr std::int64_t kSampleMultiple = 24;
  constexpr std::int64_t kLargest = 4096;  // else few frames would be silent throughout
  std::int64_t multiple = 1;
  for (const std::int64_t count : channelCounts) {
    multiple = std::lcm(multiple, count);
    precondition(multiple >= 1 && multiple <= kLargest,
                 "channel counts must have a common multiple up to 4096");
  }
  return static_cast<std::size_t>(kSampleMultiple * multiple);
}

bool areEqual(std::span<const std::byte> bytes) {
  return std::equal(bytes.begin() + 1, bytes.end(), bytes.begin());
}

/// Up to `count` bytes from `start` on, in whole units, without those whose bytes are equal.
std::vector<std::byte> varyingBytes(const InputFile& file, std::int64_t start, std::size_t unit,
                                    std::size_t count) {
  const std::size_t blockBytes = std::max<std::size_t>((std::size_t{64} << 10) / unit, 1) * unit;
  std::vector<std::byte> block(blockBytes), result;
  result.reserve(count + unit);
  std::int64_t passedOver = 0;
  auto place = static_cast<std::uint64_t>(start);
  while (result.size() < count && passedOver < kLongestSilence) {
    const auto wanted = std::min(blockBytes, (count - result.size() + unit - 1) / unit * unit);
    const auto bytes = std::span(block).first(file.readAt(place, std::span(block).first(wanted)));
    for (std::size_t i = 0; i + unit <= bytes.size(); i += unit) {
      const auto each = bytes.subspan(i, unit);
      if (areEqual(each))
        passedOver += static_cast<std::int64_t>(unit);
      else
        result.insert(result.end(), each.begin(), each.end());
    }
    if (bytes.size() < wanted) break;
    place += bytes.size();
  }
  return result;
}

/// Ranks formats by bytes that stand for the payload of their file.
std::vector<Candidate> rankWithin(std::span<const std::byte> payload,
                                  std::vector<RawPCMFormat> formats, double previewSeconds,
                                  const Execution& execution) {
  const std::int64_t skip = formats.front().headerSkipBytes;
  const auto inFile = [skip](RawPCMFormat format) {
    format.headerSkipBytes = skip;
    return format;
  };
  for (auto& format : formats) format.headerSkipBytes = 0;
  Execution within = execution;
  if (execution.onPreview)
    within.onPreview = [&](const RawPCMFormat& format, const PCMBuffer& preview) {
      execution.onPreview(inFile(format), preview);
    };
  auto ranked = rank(payload, formats, previewSeconds, within);
  for (auto& candidate : ranked) candidate.format = inFile(candidate.format);
  return ranked;
}

}  // namespace

Proposals propose(const std::filesystem::path& url, const Known& known, double previewSeconds,
                  const Execution& execution) {
  const InputFile file(url);
  const auto size = static_cast<std::int64_t>(file.size());
  std::vector<RawPCMFormat> fitting;
  double wanted = 0;  // bytes of the longest preview
  for (const std::int64_t channels : known.channelCounts)
    for (const auto& format : candidateGrid(known.sampleRate, channels, known.headerSkipBytes)) {
      if (!format.frameCount(size)) continue;
      wanted = std::max(
          wanted, previewSeconds * known.sampleRate * static_cast<double>(format.bytesPerFrame()));
      fitting.push_back(format);
    }
  if (fitting.empty()) return {};

  const auto payload = static_cast<double>(size - known.headerSkipBytes);
  const std::size_t unit = frameMultiple(known.channelCounts);
  const auto count = static_cast<std::size_t>(std::min(wanted, payload));
  const auto preview = varyingBytes(file, known.headerSkipBytes, unit, std::max(count, unit));
  if (preview.empty())
    return {.candidates = rank(url, fitting, previewSeconds, execution),
            .isSilent = payload >= static_cast<double>(unit)};
  return {.candidates = rankWithin(preview, fitting, previewSeconds, execution)};
}

}  // namespace orvane::RawPCMGuesser
