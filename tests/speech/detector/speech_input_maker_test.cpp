#include "orvane/speech/detector/speech_input_maker.h"

#include <gtest/gtest.h>

#include <random>

#include "orvane/audio/audio_source.h"
#include "tests/speech/detector/speech_test_support.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using Input = std::optional<SileroVADAnalyser::Input>;

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

/// The input made in pieces of 1 … `longest` frames.
Input inPieces(const Audio& audio, std::size_t longest) {
  std::mt19937 random(7);
  SpeechInputMaker maker(audio.rate, audio.samples.size(), 0);
  for (std::size_t frame = 0; frame < audio.frames();) {
    const std::size_t count = std::min(audio.frames() - frame, 1 + random() % longest);
    maker.process({audio.from(frame), count});
    frame += count;
  }
  return maker.finish();
}

Input atOnce(const Audio& audio) {
  return SileroVADAnalyser::prepareInput(audio.from(0), static_cast<std::int64_t>(audio.frames()),
                                         audio.rate);
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

TEST(SpeechInputMaker, ReadsAWholeStream) {
  const test::TemporaryDirectory folder;
  for (const std::size_t frames : {1000U, 1U << 17, 300'001U}) {
    const auto audio = noise(22050, 1, frames);
    const auto bytes = std::as_bytes(std::span(audio.samples[0]));
    const auto path = folder.write("a.raw", std::vector<std::byte>(bytes.begin(), bytes.end()));
    const RawPCMFormat format{
        .sampleRate = 22050, .channelCount = 1, .encoding = RawPCMFormat::Encoding::float32};
    EXPECT_EQ(speechInputOf(*AudioSource::open(path, format, {})), atOnce(audio));
  }
}

TEST(SpeechInputMaker, IsAbsentWithoutASample) {
  SpeechInputMaker maker(48000, 1, 0);
  EXPECT_FALSE(maker.finish());
}

}  // namespace
}  // namespace orvane
