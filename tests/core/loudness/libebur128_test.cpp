// Against libebur128, an independent meter to the same standards.
#include <ebur128.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>
#include <string>
#include <utility>

#include "orvane/core/decibels.h"
#include "tests/core/loudness/metering.h"
#include "tests/reference/true_peak_reference.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

using test::Programme;

struct PeerFigures {
  double integrated = 0;
  std::vector<double> shortTerm{};  ///< at the end of every `kStepsBetween` steps
  std::vector<double> truePeaks{};  ///< dBTP per channel
};

constexpr std::size_t kStepsBetween = 7;

/// Its own map by channel count ignores some channels, so positions are always told.
std::vector<int> positions(std::size_t channelCount) {
  switch (channelCount) {
    case 1:
      return {EBUR128_CENTER};
    case 2:
      return {EBUR128_LEFT, EBUR128_RIGHT};
    case 5:
      return {EBUR128_LEFT, EBUR128_RIGHT, EBUR128_CENTER, EBUR128_LEFT_SURROUND,
              EBUR128_RIGHT_SURROUND};
    default:
      return {EBUR128_LEFT,   EBUR128_RIGHT,         EBUR128_CENTER,
              EBUR128_UNUSED, EBUR128_LEFT_SURROUND, EBUR128_RIGHT_SURROUND};
  }
}

PeerFigures measureByPeer(const Programme& programme) {
  const std::size_t channels = programme.channels.size();
  const auto destroy = [](ebur128_state* state) { ebur128_destroy(&state); };
  const std::unique_ptr<ebur128_state, decltype(destroy)> state(
      ebur128_init(static_cast<unsigned>(channels),
                   static_cast<unsigned long>(programme.sampleRate),
                   EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK),
      destroy);
  const auto map = positions(channels);
  for (unsigned c = 0; c < channels; ++c) ebur128_set_channel(state.get(), c, map[c]);

  PeerFigures figures;
  const auto piece =
      kStepsBetween * static_cast<std::size_t>(std::lround(programme.sampleRate / 10));
  for (std::size_t begin = 0; begin < programme.frameCount(); begin += piece) {
    const std::size_t frames = std::min(piece, programme.frameCount() - begin);
    std::vector<float> interleaved(frames * channels);
    for (std::size_t n = 0; n < frames; ++n)
      for (std::size_t c = 0; c < channels; ++c)
        interleaved[n * channels + c] = programme.channels[c][begin + n];
    EXPECT_EQ(ebur128_add_frames_float(state.get(), interleaved.data(), frames), EBUR128_SUCCESS);
    double level = 0;
    EXPECT_EQ(ebur128_loudness_shortterm(state.get(), &level), EBUR128_SUCCESS);
    if (frames == piece) figures.shortTerm.push_back(level);
  }
  EXPECT_EQ(ebur128_loudness_global(state.get(), &figures.integrated), EBUR128_SUCCESS);
  for (unsigned c = 0; c < channels; ++c) {
    double peak = 0;
    EXPECT_EQ(ebur128_true_peak(state.get(), c, &peak), EBUR128_SUCCESS);
    figures.truePeaks.push_back(linearToDB(peak));
  }
  return figures;
}

/// How far a true peak may lie from libebur128's, dB. Between the samples both only estimate, the
/// less alike the nearer the spectrum comes to half the rate.
struct PeakBounds {
  double below = 0.1;
  double above = 0.4;
};
constexpr PeakBounds kEndsAt20kHz{0.1, 0.4};
constexpr PeakBounds kFullBand{0.1, 1.3};

void expectPeer(const Programme& programme, const PeakBounds& bounds) {
  const auto peer = measureByPeer(programme);
  const auto own = metering::measure(programme);
  // Physical: 0.01 LU. Below the absolute gate the peer's single fourth-order filter is noise.
  metering::expectSameLevel(static_cast<double>(own.integrated), peer.integrated, 0.01,
                            "integrated");
  for (std::size_t i = 0; i < peer.shortTerm.size(); ++i) {
    const auto level = static_cast<double>(own.history[(i + 1) * kStepsBetween - 1].shortTerm);
    if (std::max(level, peer.shortTerm[i]) > -70) {
      metering::expectSameLevel(level, peer.shortTerm[i], 0.01, "short-term", i);
    }
  }
  for (std::size_t c = 0; c < peer.truePeaks.size(); ++c) {
    const auto level = static_cast<double>(own.channelPeaks[c]);
    const auto samplePeak = static_cast<float>(test::reference::samplePeak(programme.channels[c]));
    EXPECT_GE(own.channelPeaks[c], linearToDB(samplePeak)) << "channel " << c;
    metering::expectSameLevel(level, peer.truePeaks[c] + (bounds.above - bounds.below) / 2,
                              (bounds.above + bounds.below) / 2 + 1e-6, "true peak", c);
  }
}

/// Where 20 kHz lie, as a share of the rate; at rates that do not reach so far, as at 48 kHz.
double bandEdge(std::uint32_t sampleRate) {
  return (sampleRate > 40000 ? 20000.0 : 0.41667 * sampleRate) / sampleRate;
}

struct Setup {
  std::size_t channelCount;
  std::uint32_t sampleRate;
};

std::string nameOf(const Setup& setup) {
  return std::to_string(setup.channelCount) + "ChannelsAt" + std::to_string(setup.sampleRate);
}

void PrintTo(const Setup& setup, std::ostream* out) {
  *out << nameOf(setup);
}

class Libebur128 : public ::testing::TestWithParam<Setup> {
 protected:
  std::size_t channelCount() const { return GetParam().channelCount; }
  std::uint32_t sampleRate() const { return GetParam().sampleRate; }

  /// One signal per channel, each from another seed.
  template <class Maker>
  Programme channelsOf(const Maker& make) const {
    Programme programme{static_cast<double>(sampleRate()), {}};
    for (std::uint64_t c = 0; c < channelCount(); ++c) programme.channels.push_back(make(200 + c));
    return programme;
  }
  /// High rates get shorter programmes: what matters at them is the rate.
  double shortened(double seconds) const {
    return seconds * std::clamp(60000.0 / sampleRate(), 0.3, 1.0);
  }
  std::size_t frames(double seconds) const {
    return static_cast<std::size_t>(shortened(seconds) * sampleRate());
  }
};

TEST_P(Libebur128, AgreesOnMusicThatEndsAt20kHz) {
  auto programme = test::music(201, sampleRate(), channelCount(), shortened(4.23));
  for (auto& channel : programme.channels) {
    channel = test::bandLimited(channel, bandEdge(sampleRate()));
    test::fadeEnds(channel, sampleRate() / 50);
  }
  expectPeer(programme, kEndsAt20kHz);
}

TEST_P(Libebur128, AgreesOnNoiseThatEndsAt20kHz) {
  const auto programme = channelsOf([&](std::uint64_t seed) {
    auto noise =
        test::bandLimited(test::pinkNoise(seed, frames(3.5), 0.9F), bandEdge(sampleRate()));
    test::fadeEnds(noise, sampleRate() / 50);
    return noise;
  });
  expectPeer(programme, kEndsAt20kHz);
}

TEST_P(Libebur128, AgreesOnFullBandNoise) {
  expectPeer(
      channelsOf([&](std::uint64_t seed) { return test::whiteNoise(seed, frames(3.7), 0.9F); }),
      kFullBand);
}

TEST_P(Libebur128, AgreesOnBursts) {
  expectPeer(channelsOf([&](std::uint64_t seed) {
               return test::noiseBursts(seed, sampleRate(), frames(4.6));
             }),
             kFullBand);
}

TEST_P(Libebur128, AgreesOnClippedMusic) {
  auto programme = test::music(202, sampleRate(), channelCount(), shortened(4.1));
  for (auto& channel : programme.channels) test::overdrive(channel, 12);
  expectPeer(programme, kFullBand);
}

TEST_P(Libebur128, AgreesOnOffsets) {
  auto programme = test::music(203, sampleRate(), channelCount(), shortened(4.1));
  for (auto& channel : programme.channels) test::offsetBy(channel, -0.4F);
  expectPeer(programme, kFullBand);
  // An offset alone: the onset is heard, what follows is not.
  expectPeer(channelsOf([&](std::uint64_t) { return std::vector<float>(frames(4), 0.5F); }),
             kFullBand);
}

TEST_P(Libebur128, AgreesOnSilence) {
  const auto programme = channelsOf([&](std::uint64_t) { return std::vector<float>(frames(3.3)); });
  EXPECT_EQ(metering::measure(programme).integrated, -INFINITY);
  expectPeer(programme, kEndsAt20kHz);
}

INSTANTIATE_TEST_SUITE_P(Stereo, Libebur128,
                         ::testing::Values(Setup{2, 8000}, Setup{2, 11025}, Setup{2, 16000},
                                           Setup{2, 22050}, Setup{2, 32000}, Setup{2, 44100},
                                           Setup{2, 48000}, Setup{2, 88200}, Setup{2, 96000},
                                           Setup{2, 176400}, Setup{2, 192000}),
                         [](const auto& instance) { return nameOf(instance.param); });

INSTANTIATE_TEST_SUITE_P(OtherLayouts, Libebur128,
                         ::testing::Values(Setup{1, 8000}, Setup{1, 44100}, Setup{1, 48000},
                                           Setup{1, 192000}, Setup{5, 8000}, Setup{5, 44100},
                                           Setup{5, 48000}, Setup{5, 192000}, Setup{6, 8000},
                                           Setup{6, 44100}, Setup{6, 48000}, Setup{6, 192000}),
                         [](const auto& instance) { return nameOf(instance.param); });

}  // namespace
}  // namespace orvane::core
