#include "orvane/edit/sample_rate_conversion.h"

#include <soxr.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>

namespace orvane {
namespace {

/// The design of the filters takes time in proportion to the ratio: seconds at this one.
constexpr double kLargestRatio = 4096;

/// Samples that the converter is given at a time; it holds that many in double precision.
constexpr std::size_t kPieceSamples = 1 << 16;

/// Hands over what is left of a channel.
std::size_t nextPiece(void* rest, soxr_in_t* piece, std::size_t most) {
  auto& samples = *static_cast<std::span<const float>*>(rest);
  const std::size_t count = std::min(most, samples.size());
  *piece = samples.data();
  samples = samples.subspan(count);
  return count;
}

}  // namespace

std::optional<std::vector<float>> atSampleRate(std::span<const float> samples, double fromRate,
                                               double toRate) {
  const double ratio = toRate / fromRate;
  if (!(ratio <= kLargestRatio && ratio >= 1 / kLargestRatio)) return std::nullopt;
  try {
    const double exactLength = static_cast<double>(samples.size()) * toRate / fromRate;
    std::vector<float> converted(static_cast<std::size_t>(std::llround(exactLength)));
    if (converted.empty()) return converted;
    // Without the precise clock, rates that have no small ratio drift to −115 dB within 10 s.
    const auto quality = soxr_quality_spec(SOXR_VHQ | SOXR_LINEAR_PHASE, SOXR_HI_PREC_CLOCK);
    const std::unique_ptr<soxr, decltype(&soxr_delete)> converter(
        soxr_create(fromRate, toRate, 1, nullptr, nullptr, &quality, nullptr), soxr_delete);
    if (!converter || soxr_set_input_fn(converter.get(), nextPiece, &samples, kPieceSamples))
      return std::nullopt;
    soxr_output(converter.get(), converted.data(), converted.size());
    if (soxr_error(converter.get())) return std::nullopt;
    return converted;
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  } catch (const std::length_error&) {
    return std::nullopt;
  }
}

}  // namespace orvane
