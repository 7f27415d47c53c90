#include "orvane/speech/detector/speech_input_maker.h"

#include <gtest/gtest.h>

#include <random>
#include <span>
#include <vector>

#include "orvane/speech/detector/silero_vad_analyser.h"
#include "tests/speech/detector/speech_test_support.h"

namespace orvane {
namespace {

struct Audio {
  std::vector<std::vector<float>> samples{};
  double rate = 0;

  std::vector<const float*> from(std::size_t frame) const {
    std::vector<const float*> channels;
    for (const auto& channel : samples) channels.push_back(channel.data() + frame);
    return channels;
  }
  std::size_t frames() const { return samples[0].size(); }
};

Audio noise(double rate, std::size_t channels, std::size_t frames) {
  Audio audio{.rate = rate};
  for (std::size_t c = 0; c < channels; ++c)
    audio.samples.push_back(
        test::burstyNoise(static_cast<std::uint32_t>(frames), static_cast<std::uint32_t>(c) + 1));
  return audio;
}

using Samples = std::vector<float>;

/// The input made in pieces of 1 … `longest` frames.
Samples inPieces(const Audio& audio, std::size_t longest) {
  std::mt19937 random(7);
  SpeechInputMaker maker(audio.rate, audio.samples.size());
  Samples all;
  const auto add = [&](std::span<const float> samples) {
    all.insert(all.end(), samples.begin(), samples.end());
  };
  for (std::size_t frame = 0; frame < audio.frames();) {
    const std::size_t count = std::min(audio.frames() - frame, 1 + random() % longest);
    add(maker.process({audio.from(frame), count}));
    frame += count;
  }
  EXPECT_EQ(maker.frameCount(), static_cast<std::int64_t>(audio.frames()));
  add(maker.finish());
  return all;
}

Samples atOnce(const Audio& audio) {
  auto input = SileroVADAnalyser::prepareInput(
      audio.from(0), static_cast<std::int64_t>(audio.frames()), audio.rate);
  return input ? std::move(input->samples16k) : Samples();
}

TEST(SpeechInputMaker, MakesOfPiecesWhatIsMadeOfTheWhole) {
  for (const double rate : {4000.0, 8000.0, 11025.0, 16000.0, 22050.0, 44100.0, 48000.0, 96001.5})
    for (const std::size_t frames : {20'000U, 20'001U, 20'002U})
      for (const std::size_t longest : {1U, 2U, 7U, 9000U}) {
        SCOPED_TRACE(testing::Message() << rate << " Hz, " << frames << ", " << longest);
        const auto audio = noise(rate, 2, frames);
        ASSERT_EQ(inPieces(audio, longest), atOnce(audio));
      }
}

TEST(SpeechInputMaker, MakesTheSameOfTheShortest) {
  for (const double rate : {8000.0, 16000.0, 32000.0, 48000.0})
    for (std::size_t frames = 1; frames < 12; ++frames) {
      SCOPED_TRACE(testing::Message() << rate << " Hz, " << frames);
      const auto audio = noise(rate, 1, frames);
      EXPECT_EQ(inPieces(audio, 3), atOnce(audio));
    }
}

TEST(SpeechInputMaker, MakesNothingOfNothing) {
  SpeechInputMaker maker(48000, 1);
  EXPECT_TRUE(maker.finish().empty());
}

}  // namespace
}  // namespace orvane
