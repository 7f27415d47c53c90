#include "orvane/analysis/alignment_search.h"

#include <kiss_fftr.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <vector>

#include "orvane/platform/signal_kernels.h"

namespace orvane::AlignmentSearch {
namespace {

constexpr double kLongestReach = 1 << 20;
/// Of A, in multiples of the reach: enough that chance does not make a peak.
constexpr std::size_t kWindowReaches = 4;

/// Of two random signals none reaches this, of two codings of one programme every one does.
constexpr double kLeastCorrelation = 0.5;
/// In fewer frames chance finds a likeness somewhere.
constexpr std::size_t kLeastFrames = 1024;
/// 6 dB, in power.
constexpr double kNeededImprovement = 0.25;
/// Below this share of all of B's excerpt a stretch is drowned by the transform's rounding.
constexpr double kLeastEnergyShare = 1e-6;
/// Peaks that differ by less are one: those of a tone, a period apart.
constexpr double kEqualPeaks = 1e-5;

using Spectrum = std::vector<kiss_fft_cpx>;

/// Real transforms of one size.
class Transform {
 public:
  explicit Transform(std::size_t size)
      : size_(size), forward_(plan(false)), backward_(plan(true)) {}

  Spectrum forward(std::vector<float> samples) const {
    samples.resize(size_);
    Spectrum spectrum(size_ / 2 + 1);
    kiss_fftr(forward_.get(), samples.data(), spectrum.data());
    return spectrum;
  }

  std::vector<float> backward(const Spectrum& spectrum) const {
    std::vector<float> samples(size_);
    kiss_fftri(backward_.get(), spectrum.data(), samples.data());
    for (float& sample : samples) sample /= static_cast<float>(size_);
    return samples;
  }

 private:
  using Plan = std::unique_ptr<kiss_fftr_state, void (*)(void*)>;
  Plan plan(bool isBackward) const {
    Plan made(kiss_fftr_alloc(static_cast<int>(size_), isBackward ? 1 : 0, nullptr, nullptr),
              kiss_fftr_free);
    if (!made) throw std::bad_alloc();
    return made;
  }

  std::size_t size_;
  Plan forward_, backward_;
};

/// Where A is looked at, and how far around that B is.
struct Place {
  std::int64_t start = 0;
  std::size_t window = 0;
  std::size_t reach = 0;
};

/// Differences of neighbouring samples from `first` on; outside the audio it is silent. They lift
/// the high frequencies, whose peak is narrow, and know no DC offset.
std::vector<float> differences(std::span<const float> samples, std::int64_t first,
                               std::size_t count) {
  const auto at = [&](std::int64_t i) {
    if (i < 0 || i >= static_cast<std::int64_t>(samples.size())) return 0.0F;
    const float x = samples[static_cast<std::size_t>(i)];
    return std::isfinite(x) ? x : 0.0F;
  };
  std::vector<float> result(count);
  float previous = at(first);
  for (std::size_t i = 0; i < count; ++i) {
    const float next = at(first + static_cast<std::int64_t>(i) + 1);
    result[i] = next - previous;
    previous = next;
  }
  return result;
}

/// The loudest stretch of A, as far as possible with the reach on both sides of it.
Place loudestPlace(PlanarView a, std::size_t frames, double sampleRate) {
  const auto reach = static_cast<std::size_t>(std::min(sampleRate * kReachSeconds, kLongestReach));
  const std::size_t wanted = std::max(reach * kWindowReaches, kLeastFrames);
  Place place{.start = 0, .window = std::min(frames, wanted), .reach = reach};
  if (frames <= place.window + 2 * reach) {
    place.start = static_cast<std::int64_t>((frames - place.window) / 2);
    return place;
  }
  double loudest = -1;
  for (std::size_t start = reach; start + place.window + reach <= frames; start += place.window) {
    double energy = 0;
    for (std::size_t channel = 0; channel < a.channelCount(); ++channel) {
      const auto run =
          SignalKernels::runStatistics(a.channel(channel) + start, place.window).sumOfSquares;
      if (std::isfinite(run)) energy += run;
    }
    if (energy > loudest) {
      loudest = energy;
      place.start = static_cast<std::int64_t>(start);
    }
  }
  return place;
}

/// The differences of A's window and of B within the reach around it, channel by channel.
struct Excerpts {
  std::vector<std::vector<float>> a{}, b{};
  double energyOfA = 0;
  std::vector<double> energySums{0};  ///< of B, up to each sample

  Excerpts(PlanarView fromA, PlanarView fromB, const Place& place) {
    const std::size_t count = place.window - 1;
    energySums.resize(count + 2 * place.reach + 1);
    for (std::size_t channel = 0; channel < fromA.channelCount(); ++channel) {
      a.push_back(differences(fromA.samples(channel), place.start, count));
      b.push_back(differences(fromB.samples(channel),
                              place.start - static_cast<std::int64_t>(place.reach),
                              count + 2 * place.reach));
      energyOfA += SignalKernels::runStatistics(a.back().data(), count).sumOfSquares;
      double sum = 0;
      for (std::size_t i = 0; i < b.back().size(); ++i) {
        const auto x = static_cast<double>(b.back()[i]);
        energySums[i + 1] += sum += x * x;
      }
    }
  }

  std::size_t window() const { return a.front().size(); }
  std::size_t lagCount() const { return b.front().size() - window() + 1; }

  /// `product` of A's window and B's at that lag, made independent of both levels.
  double normalized(double product, std::size_t lag) const {
    const double energy = energySums[lag + window()] - energySums[lag];
    if (!(energy > kLeastEnergyShare * energySums.back())) return 0;
    return product / std::sqrt(energyOfA * energy);
  }

  /// In double precision.
  double correlation(std::size_t lag) const {
    double product = 0;
    for (std::size_t channel = 0; channel < a.size(); ++channel)
      product +=
          SignalKernels::pairStatistics(a[channel].data(), b[channel].data() + lag, window()).dot;
    return normalized(product, lag);
  }
};

/// Of every lag, to the transform's rounding.
std::vector<double> allCorrelations(const Excerpts& excerpts) {
  const auto size = static_cast<std::size_t>(
      kiss_fftr_next_fast_size_real(static_cast<int>(excerpts.b.front().size())));
  const Transform transform(size);
  Spectrum sum(size / 2 + 1);
  for (std::size_t channel = 0; channel < excerpts.a.size(); ++channel) {
    const Spectrum a = transform.forward(excerpts.a[channel]);
    const Spectrum b = transform.forward(excerpts.b[channel]);
    for (std::size_t bin = 0; bin < sum.size(); ++bin) {
      sum[bin].r += a[bin].r * b[bin].r + a[bin].i * b[bin].i;
      sum[bin].i += a[bin].r * b[bin].i - a[bin].i * b[bin].r;
    }
  }
  const auto products = transform.backward(sum);
  std::vector<double> correlations(excerpts.lagCount());
  for (std::size_t lag = 0; lag < correlations.size(); ++lag)
    correlations[lag] = excerpts.normalized(static_cast<double>(products[lag]), lag);
  return correlations;
}

/// The highest peak; of several the one that moves B least.
std::size_t bestLag(const std::vector<double>& correlations, std::size_t reach) {
  const double highest = *std::ranges::max_element(correlations) - kEqualPeaks;
  const auto isPeak = [&](std::size_t lag) {
    return correlations[lag] >= highest &&
           (lag == 0 || correlations[lag] >= correlations[lag - 1]) &&
           (lag + 1 == correlations.size() || correlations[lag] >= correlations[lag + 1]);
  };
  for (std::size_t distance = 0; distance < reach; ++distance)
    for (const std::size_t lag : {reach - distance, reach + distance})
      if (isPeak(lag)) return lag;
  return isPeak(0) ? 0 : 2 * reach;
}

}  // namespace

std::optional<Offset> find(PlanarView a, PlanarView b, double sampleRate) {
  const std::size_t frames = std::min(a.frameCount(), b.frameCount());
  if (frames < kLeastFrames || a.channelCount() == 0) return std::nullopt;
  const Place place = loudestPlace(a, frames, sampleRate);
  const Excerpts excerpts(a, b, place);
  if (!(excerpts.energyOfA > 0)) return std::nullopt;

  std::size_t lag = bestLag(allCorrelations(excerpts), place.reach);
  double correlation = excerpts.correlation(lag);
  // The rounding may have moved a broad peak.
  const auto climbTo = [&](std::size_t next) {
    const double there = next < excerpts.lagCount() ? excerpts.correlation(next) : 0;
    if (!(there > correlation)) return false;
    lag = next;
    correlation = there;
    return true;
  };
  while (climbTo(lag + 1)) {
  }
  while (lag > 0 && climbTo(lag - 1)) {
  }

  const double inPlace = std::max(excerpts.correlation(place.reach), 0.0);
  const auto remainder = [](double value) { return std::max(1 - value * value, 0.0); };
  const bool isDeeper = remainder(correlation) <= kNeededImprovement * remainder(inPlace);
  if (lag == place.reach || !(correlation >= kLeastCorrelation) || !isDeeper) return std::nullopt;
  return Offset{.frames = static_cast<std::int64_t>(lag) - static_cast<std::int64_t>(place.reach),
                .correlation = std::min(correlation, 1.0)};
}

}  // namespace orvane::AlignmentSearch
