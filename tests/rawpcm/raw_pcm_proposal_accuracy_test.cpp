// How often the best proposal is the right one, on audio that is not too quiet for it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <numbers>
#include <string>
#include <tuple>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/rawpcm/raw_pcm_proposal.h"
#include "orvane/rawpcm/raw_pcm_reader.h"
#include "tests/rawpcm/raw_pcm_samples.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using test::Bytes;
using test::Programme;
using Channel = std::vector<float>;

constexpr double kSeconds = 4;
constexpr double kPreviewSeconds = 10;

/// Spoken words, about ten seconds at 22050 Hz.
const Channel& speech() {
  static const Channel samples = [] {
    const test::TemporaryDirectory folder;
    const auto file = folder / "spoken.wav";
    test::runTool("espeak-ng",
                  {"-v", "en", "-w", file,
                   "The quick brown fox jumps over the lazy dog. How much wood would a woodchuck "
                   "chuck, if a woodchuck could chuck wood? She sells sea shells by the shore."});
    const auto audio =
        RawPCMReader::read(file, {.sampleRate = 22050, .channelCount = 1, .headerSkipBytes = 44});
    return Channel(audio->channel(0), audio->channel(0) + audio->frameLength());
  }();
  return samples;
}

Programme tones(test::Random& random, std::uint32_t rate, std::size_t channels) {
  Programme programme{static_cast<double>(rate), {}};
  const auto frames = static_cast<std::size_t>(kSeconds * rate);
  for (std::size_t c = 0; c < channels; ++c)
    programme.channels.push_back(
        test::lockedSine(frames, static_cast<std::uint32_t>(random.between(40, 3000)), rate,
                         random.between(0, 6), 1));
  return programme;
}

/// Notes and drums with the spectrum of recorded music, which falls by about 6 dB per octave; the
/// drums of the maker are white.
Programme music(test::Random& random, std::uint32_t rate, std::size_t channels) {
  constexpr double kCorner = 2000;  // Hz
  auto programme = test::music(random.next(), rate, channels, kSeconds);
  const auto share = static_cast<float>(1 - std::exp(-2 * std::numbers::pi * kCorner / rate));
  for (auto& channel : programme.channels) {
    float held = 0;
    for (float& x : channel) x = held += share * (x - held);
  }
  return programme;
}

/// In every channel somewhat later and at another level.
Programme spoken(test::Random& random, std::size_t channels) {
  Programme programme{22050, {}};
  const auto frames = static_cast<std::size_t>(kSeconds * 22050);
  const auto begin = random.below(speech().size() - frames - 2000);
  for (std::size_t c = 0; c < channels; ++c) {
    const auto first = speech().begin() + static_cast<std::ptrdiff_t>(begin + random.below(2000));
    Channel samples(first, first + static_cast<std::ptrdiff_t>(frames));
    const auto gain = static_cast<float>(random.between(0.3, 1));
    for (float& x : samples) x *= gain;
    programme.channels.push_back(std::move(samples));
  }
  return programme;
}

double rmsOf(const Programme& programme) {
  double sum = 0;
  for (const auto& channel : programme.channels)
    for (const float x : channel) sum += static_cast<double>(x) * x;
  return std::sqrt(sum / static_cast<double>(programme.frameCount() * programme.channels.size()));
}

void scaleTo(Programme& programme, double rms) {
  const auto gain = static_cast<float>(rms / rmsOf(programme));
  for (auto& channel : programme.channels)
    for (float& x : channel) x *= gain;
}

struct Case {
  RawPCMFormat format{};
  std::string description{};
  Bytes bytes{};
};

/// The same for a number on every machine.
Case makeCase(std::size_t number) {
  constexpr std::size_t kChannels[] = {1, 2, 6};
  constexpr std::uint32_t kRates[] = {32000, 44100, 48000, 96000};
  test::Random random(number);
  const std::size_t channels = kChannels[number / 13 % 3];
  const std::uint32_t rate = kRates[random.below(4)];
  const std::size_t kind = number / 39 % 3;
  Programme programme = kind == 0   ? tones(random, rate, channels)
                        : kind == 1 ? music(random, rate, channels)
                                    : spoken(random, channels);
  const double level = random.between(-30, -10);
  scaleTo(programme, std::pow(10, level / 20));
  const double silence = random.below(2) == 0 ? 0 : random.between(0, 5);
  const std::size_t skip = random.below(2) == 0 ? 0 : 1 + random.below(4096);

  Case result;
  result.format =
      RawPCMGuesser::candidateGrid(programme.sampleRate, static_cast<std::int64_t>(channels),
                                   static_cast<std::int64_t>(skip))[number % 13];
  for (auto& channel : programme.channels)
    channel.insert(channel.begin(), static_cast<std::size_t>(silence * programme.sampleRate), 0.0F);
  for (std::size_t i = 0; i < skip; ++i)
    result.bytes.push_back(static_cast<std::byte>(random.below(256)));
  const auto samples = test::rawSamples(programme, result.format);
  result.bytes.insert(result.bytes.end(), samples.begin(), samples.end());
  const char* const kinds[] = {"tones", "music", "speech"};
  result.description = "case " + std::to_string(number) + ": " + kinds[kind] + ", " +
                       result.format.summary() + ", " + std::to_string(level) + " dBFS, silence " +
                       std::to_string(silence) + " s";
  return result;
}

/// The tokens that are proposed for a file, best first, when all but the encoding is known.
std::vector<std::string> proposals(const std::filesystem::path& file, const RawPCMFormat& format) {
  const auto found = RawPCMGuesser::propose(
      file, {format.sampleRate, {format.channelCount}, format.headerSkipBytes}, kPreviewSeconds,
      {.threadCount = 2, .onPreview = {}});
  std::vector<std::string> tokens;
  for (const auto& candidate : found.candidates) tokens.push_back(candidate.format.formatToken());
  return tokens;
}

struct Tally {
  std::size_t cases = 0;
  std::size_t first = 0;
  std::size_t withinTwo = 0;

  void add(const Case& one, const std::vector<std::string>& tokens) {
    const auto found = std::find(tokens.begin(), tokens.end(), one.format.formatToken());
    const auto place = found - tokens.begin();
    if (place > 0)
      std::cout << one.description << ": place " << place + 1 << " behind " << tokens[0] << "\n";
    ++cases;
    if (place == 0) ++first;
    if (place <= 1) ++withinTwo;
  }
  double share(std::size_t count) const {
    return static_cast<double>(count) / static_cast<double>(cases);
  }
  void require(double firstShare, double withinTwoShare) const {
    std::cout << first << " right in first place, " << withinTwo << " within two of " << cases
              << "\n";
    EXPECT_GE(share(first), firstShare);
    EXPECT_GE(share(withinTwo), withinTwoShare);
  }
};

TEST(RawPCMProposalAccuracy, IsRightInFirstPlaceNineteenTimesOfTwenty) {
  // All 500 on request; else every fifth, which has all encodings, channel counts and kinds.
  const bool isFull = std::getenv("ORVANE_ALL_CASES") != nullptr;
  const test::TemporaryDirectory folder;
  Tally tally;
  for (std::size_t number = 0; number < 500; number += isFull ? 1 : 5) {
    const auto one = makeCase(number);
    tally.add(one, proposals(folder.write("take.raw", one.bytes), one.format));
  }
  tally.require(0.95, 0.99);
}

TEST(RawPCMProposalAccuracy, IsRightAboutRecordings) {
  const char* const recordings = std::getenv("ORVANE_RECORDINGS");
  if (recordings == nullptr) GTEST_SKIP() << "ORVANE_RECORDINGS names no folder of audio files";
  constexpr double kLeastRMS = 0.0316;  // -30 dBFS
  const test::TemporaryDirectory folder;
  Tally tally;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(recordings)) {
    if (!entry.is_regular_file()) continue;
    const auto audio = AudioSourceReader::load(entry.path()).buffer;
    Programme programme{audio->sampleRate(), {}};
    const auto frames = std::min<std::size_t>(
        audio->frameLength(), static_cast<std::size_t>(kPreviewSeconds * audio->sampleRate()));
    for (std::uint32_t c = 0; c < audio->channelCount(); ++c)
      programme.channels.emplace_back(audio->channel(c), audio->channel(c) + frames);
    if (rmsOf(programme) < kLeastRMS) continue;
    for (const auto& format :
         RawPCMGuesser::candidateGrid(audio->sampleRate(), audio->channelCount(), 0)) {
      const Case one{format, entry.path().filename().string() + ", " + format.summary(),
                     test::rawSamples(programme, format)};
      tally.add(one, proposals(folder.write("take.raw", one.bytes), format));
    }
  }
  tally.require(0.95, 0.99);
}

/// What comes out first for what the rule cannot tell.
class RawPCMProposalLimits : public testing::Test {
 protected:
  std::string best(const std::string& token, const std::vector<Channel>& channels) const {
    RawPCMFormat format{.sampleRate = kRate,
                        .channelCount = static_cast<std::int64_t>(channels.size())};
    std::tie(format.encoding, format.endianness) = *RawPCMFormat::encodingAndEndianness(token);
    const auto bytes = test::rawSamples({kRate, channels}, format);
    return proposals(folder.write("take.raw", bytes), format).at(0);
  }
  static Channel tone(std::uint32_t hertz, double amplitude) {
    return test::lockedSine(2 * kRate, hertz, kRate, 0, amplitude);
  }

  static constexpr std::uint32_t kRate = 48000;
  test::TemporaryDirectory folder;
};

TEST_F(RawPCMProposalLimits, NoiseIsSmoothInNoEncoding) {
  const auto noise = test::whiteNoise(1, 2 * kRate, 0.5F);
  EXPECT_EQ(best("s16le", {noise}), "s16le");  // by chance
  EXPECT_EQ(best("s24be", {noise}), "s32le");
  EXPECT_EQ(best("f32le", {noise}), "s24_32le");
}

TEST_F(RawPCMProposalLimits, HighTonesAreSmootherInAWrongEncoding) {
  EXPECT_EQ(best("s16le", {tone(3000, 0.5)}), "s16le");
  EXPECT_EQ(best("s16le", {tone(15000, 0.5)}), "s16be");
  EXPECT_EQ(best("s24le", {tone(15000, 0.5)}), "s24_32be");
}

TEST_F(RawPCMProposalLimits, ASilentChannelCountsAgainstTheRightEncoding) {
  const Channel silence(2 * kRate);
  EXPECT_EQ(best("s16le", {tone(440, 0.5), tone(441, 0.5)}), "s16le");
  EXPECT_EQ(best("s16le", {tone(440, 0.5), silence}), "s24_32be");
  EXPECT_EQ(best("s24le", {silence, tone(440, 0.5)}), "s24le");
}

TEST_F(RawPCMProposalLimits, QuietEightBitsAreRough) {
  // A tone of -40 dBFS has two steps on either side, and may come out right even so.
  EXPECT_EQ(best("u8", {tone(440, 0.01)}), "u8");
  EXPECT_EQ(best("u8", {test::pinkNoise(1, 2 * kRate, 0.02F)}), "s16le");
}

TEST_F(RawPCMProposalLimits, SmallSamplesOf32BitsAreTakenFor24) {
  EXPECT_EQ(best("s32le", {tone(440, 0.5)}), "s32le");
  EXPECT_EQ(best("s32le", {tone(440, 1.0 / 512)}), "s24_32le");
}

TEST_F(RawPCMProposalLimits, SilenceLooksLikeEightBitsUnlessItIsCut) {
  Channel late(5 * kRate);
  const auto sound = tone(440, 0.5);
  late.insert(late.end(), sound.begin(), sound.end());
  EXPECT_EQ(best("s16le", {late}), "s16le");
  const auto grid = RawPCMGuesser::candidateGrid(kRate, 1, 0);
  const auto ranked = RawPCMGuesser::rank(folder / "take.raw", grid, kPreviewSeconds);
  EXPECT_EQ(ranked.at(0).format.formatToken(), "u8");
}

}  // namespace
}  // namespace orvane
