// Against FFmpeg's ebur128 filter, a second independent meter.
#include <gtest/gtest.h>
#include <sndfile.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "tests/core/loudness/metering.h"
#include "tests/support/signals.h"
#include "tests/support/temporary_directory.h"

namespace orvane::core {
namespace {

using test::Programme;

struct PeerFigures {
  std::vector<double> shortTerm{};  ///< one per 100 ms
  double integrated = 0;
  std::vector<double> truePeaks{};  ///< dBTP per channel
};

void writeWave(const std::filesystem::path& path, const Programme& programme) {
  const std::size_t channels = programme.channels.size();
  SF_INFO info{};
  info.samplerate = static_cast<int>(programme.sampleRate);
  info.channels = static_cast<int>(channels);
  info.format = SF_FORMAT_WAVEX | SF_FORMAT_FLOAT;
  SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr);
  if (channels == 6) {
    std::array<int, 6> map{SF_CHANNEL_MAP_LEFT,      SF_CHANNEL_MAP_RIGHT,
                           SF_CHANNEL_MAP_CENTER,    SF_CHANNEL_MAP_LFE,
                           SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT};
    sf_command(file, SFC_SET_CHANNEL_MAP_INFO, map.data(), sizeof(map));
  }
  std::vector<float> interleaved;
  for (std::size_t n = 0; n < programme.frameCount(); ++n)
    for (const auto& channel : programme.channels) interleaved.push_back(channel[n]);
  sf_writef_float(file, interleaved.data(), static_cast<sf_count_t>(programme.frameCount()));
  sf_close(file);
}

/// The filter writes its figures as "key=value" lines, a group for each 100 ms.
PeerFigures measureByPeer(const Programme& programme) {
  const test::TemporaryDirectory folder;
  const auto path = folder / "programme.wav";
  writeWave(path, programme);
  const std::string command =
      "ffmpeg -v error -nostdin -i '" + path.string() +
      "' -af ebur128=peak=true:metadata=1:framelog=verbose,ametadata=print:file=- -f null -";
  const auto close = [](std::FILE* pipe) { pclose(pipe); };
  const std::unique_ptr<std::FILE, decltype(close)> pipe(popen(command.c_str(), "r"), close);
  PeerFigures figures;
  figures.truePeaks.resize(programme.channels.size());
  std::array<char, 256> buffer{};
  while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe.get()) != nullptr) {
    const std::string line = buffer.data();
    const std::size_t equals = line.find('=');
    if (!line.starts_with("lavfi.r128.") || equals == std::string::npos) continue;
    const std::string_view key = std::string_view(line).substr(11, equals - 11);
    const double value = std::stod(line.substr(equals + 1));
    if (key == "S") figures.shortTerm.push_back(value);
    if (key == "I") figures.integrated = value;
    constexpr std::string_view kPeak = "true_peaks_ch";
    if (key.starts_with(kPeak))
      figures.truePeaks.at(static_cast<std::size_t>(
          std::stoi(std::string(key.substr(kPeak.size()))))) = 20 * std::log10(value);
  }
  return figures;
}

/// Music that ends at 20 kHz: on what lies above, filters of any length differ.
Programme bandLimitedMusic(std::uint64_t seed, std::uint32_t sampleRate, std::size_t channelCount,
                           double seconds) {
  auto programme = test::music(seed, sampleRate, channelCount, seconds);
  for (auto& channel : programme.channels)
    channel = test::bandLimited(channel, 20000.0 / sampleRate);
  return programme;
}

void expectPeer(const Programme& programme) {
  const auto peer = measureByPeer(programme);
  const auto own = metering::measure(programme);
  // Physical: it bins integrated loudness by 0.01 LU and prints three decimals.
  EXPECT_NEAR(static_cast<double>(own.integrated), peer.integrated, 0.02);
  const std::size_t steps =
      programme.frameCount() / static_cast<std::size_t>(programme.sampleRate / 10);
  ASSERT_GE(peer.shortTerm.size(), steps);
  // It has no figure before a whole window; a little is asked of quiet passages too.
  for (std::size_t step = 29; step < steps; ++step)
    EXPECT_NEAR(static_cast<double>(own.history[step].shortTerm), peer.shortTerm[step], 0.01)
        << "step " << step;
  for (std::size_t c = 0; c < peer.truePeaks.size(); ++c) {
    EXPECT_GT(static_cast<double>(own.channelPeaks[c]), peer.truePeaks[c] - 0.4) << "channel " << c;
    EXPECT_LT(static_cast<double>(own.channelPeaks[c]), peer.truePeaks[c] + 0.2) << "channel " << c;
  }
}

TEST(FfmpegEbur128, AgreesOnStereoMusic) {
  expectPeer(bandLimitedMusic(301, 48000, 2, 12));
}

TEST(FfmpegEbur128, AgreesOnMonoAndOtherRates) {
  expectPeer(bandLimitedMusic(302, 44100, 1, 6));
  expectPeer(bandLimitedMusic(303, 96000, 2, 5));
}

TEST(FfmpegEbur128, AgreesOnSurround) {
  expectPeer(bandLimitedMusic(304, 48000, 6, 6));
}

}  // namespace
}  // namespace orvane::core
