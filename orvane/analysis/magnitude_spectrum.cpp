#include "orvane/analysis/magnitude_spectrum.h"

#include <kiss_fftr.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>
#include <new>
#include <numbers>

namespace orvane {
namespace {

constexpr std::size_t kLargestSize = 8192;
constexpr std::size_t kSmallestSize = 256;
/// More windows than these change the mean of no programme visibly.
constexpr std::size_t kMaximumWindows = 2048;

/// Sums of power spectra.
struct PowerSums {
  std::vector<std::vector<double>> channels;
  std::vector<double> mid, side;
};

class Transform {
 public:
  explicit Transform(std::size_t size)
      : size_(size),
        plan_(kiss_fftr_alloc(static_cast<int>(size), 0, nullptr, nullptr), kiss_fftr_free),
        window_(size),
        input_(size) {
    if (!plan_) throw std::bad_alloc();
    for (std::size_t i = 0; i < size; ++i)
      window_[i] =
          static_cast<float>(0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) /
                                                  static_cast<double>(size)));
  }

  std::size_t bins() const { return size_ / 2 + 1; }

  /// The spectrum of up to one window of samples; silence behind them.
  void run(const float* samples, std::size_t count, std::vector<kiss_fft_cpx>& spectrum) {
    count = std::min(count, size_);
    for (std::size_t i = 0; i < size_; ++i) {
      const float x = i < count ? samples[i] : 0.0F;
      input_[i] = std::isfinite(x) ? x * window_[i] : 0.0F;
    }
    spectrum.resize(bins());
    kiss_fftr(plan_.get(), input_.data(), spectrum.data());
  }

 private:
  std::size_t size_;
  std::unique_ptr<kiss_fftr_state, void (*)(void*)> plan_;
  std::vector<float> window_;
  std::vector<float> input_;
};

double power(float re, float im) {
  return static_cast<double>(re) * static_cast<double>(re) +
         static_cast<double>(im) * static_cast<double>(im);
}

void addWindow(const std::vector<std::vector<kiss_fft_cpx>>& spectra, PowerSums& sums) {
  for (std::size_t channel = 0; channel < spectra.size(); ++channel)
    for (std::size_t bin = 0; bin < spectra[channel].size(); ++bin)
      sums.channels[channel][bin] += power(spectra[channel][bin].r, spectra[channel][bin].i);
  if (spectra.size() != 2) return;
  // The transform is linear: mid and side need none of their own.
  for (std::size_t bin = 0; bin < spectra[0].size(); ++bin) {
    const kiss_fft_cpx l = spectra[0][bin], r = spectra[1][bin];
    sums.mid[bin] += power((l.r + r.r) / 2, (l.i + r.i) / 2);
    sums.side[bin] += power((l.r - r.r) / 2, (l.i - r.i) / 2);
  }
}

}  // namespace

MagnitudeSpectra magnitudeSpectra(const ProgrammeView& programme) {
  const std::size_t size =
      std::clamp(std::bit_floor(programme.audio.frameCount()), kSmallestSize, kLargestSize);
  const std::size_t hop = size / 2;
  const std::size_t positions =
      programme.audio.frameCount() > size ? (programme.audio.frameCount() - size) / hop + 1 : 1;
  const std::size_t windows = std::min(positions, kMaximumWindows);

  Transform transform(size);
  PowerSums sums{.channels = std::vector<std::vector<double>>(
                     programme.audio.channelCount(), std::vector<double>(transform.bins())),
                 .mid = std::vector<double>(transform.bins()),
                 .side = std::vector<double>(transform.bins())};
  std::vector<std::vector<kiss_fft_cpx>> spectra(programme.audio.channelCount());
  for (std::size_t window = 0; window < windows; ++window) {
    const std::size_t start = window * positions / windows * hop;
    for (std::size_t channel = 0; channel < spectra.size(); ++channel)
      transform.run(programme.audio.channel(channel) + start, programme.audio.frameCount() - start,
                    spectra[channel]);
    addWindow(spectra, sums);
  }

  // A sine of amplitude 1 in the middle of a bin gives size ÷ 2 there, halved by the window's mean.
  const double scale = 4.0 / static_cast<double>(size);
  const auto magnitudes = [&](const std::vector<double>& powers) {
    std::vector<float> result;
    for (const double sum : powers)
      result.push_back(static_cast<float>(scale * std::sqrt(sum / static_cast<double>(windows))));
    return result;
  };
  MagnitudeSpectra result{.fftSize = size};
  for (const auto& powers : sums.channels) result.channels.push_back(magnitudes(powers));
  if (programme.audio.channelCount() == 2)
    result.midSide = {magnitudes(sums.mid), magnitudes(sums.side)};
  return result;
}

}  // namespace orvane
