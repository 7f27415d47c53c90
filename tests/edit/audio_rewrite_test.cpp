#include "orvane/edit/audio_rewrite.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "orvane/audio/audio_source.h"
#include "orvane/container/pcm_file_writer.h"
#include "orvane/edit/edit_chain.h"
#include "orvane/edit/in_place_save.h"
#include "orvane/edit/pcm_write_settings.h"
#include "tests/container/peer_decoding.h"
#include "tests/support/ffmpeg_comparison.h"
#include "tests/support/marked_files.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

class AudioRewriteTest : public testing::Test {
 protected:
  const test::TemporaryDirectory& folder() const { return folder_; }

  /// The audio of the file without its first ten frames.
  static std::shared_ptr<PCMBuffer> trimmed(AudioSource& source) {
    const EditChain chain = chainOf(source);
    auto audio = chain.load(source);
    chain.apply(*audio);
    return audio;
  }
  static EditChain chainOf(AudioSource& source) {
    return {{TrimEdit{{10, 100}}}, source.frameLength(), 1};
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(AudioRewriteTest, WritesWhatASaveInPlaceWrites) {
  const char* extensions[] = {"wav", "wav", "rf64", "bw64", "w64", "aiff", "caf"};
  const auto files = test::markedFiles();
  for (std::size_t i = 0; i < files.size(); ++i) {
    const std::string extension = extensions[i];
    const auto path = folder().write("a." + extension, files[i]);
    const auto source = AudioSource::open(path);
    const auto audio = trimmed(*source);
    const auto frames = chainOf(*source).frameMap();
    AtomicFile target(folder() / "b");
    const auto copied =
        AudioRewrite::write(audio->view(), source->file(), target, {.frames = frames});
    target.commit();
    EXPECT_EQ(test::readFile(path).size(), files[i].size());
    const auto saved = InPlaceSave::write(*audio, path, {.rewrite = {.frames = frames}});
    EXPECT_TRUE(test::readFile(folder() / "b") == test::readFile(path)) << extension;
    EXPECT_EQ(copied.notes, saved.rewrite.notes);
    EXPECT_TRUE(std::ranges::any_of(copied.notes, [](const std::string& note) {
      return note.find("is gone") != std::string::npos;
    })) << extension;
  }
}

/// A file of a ramp, in steps that eight bits hold.
class AudioRewriteEncodingTest : public AudioRewriteTest {
 protected:
  static constexpr std::uint32_t kFrames = 33;

  std::filesystem::path write(AudioContainer container, const std::optional<ChannelLayout>& layout,
                              const PCMEncoding& encoding) const {
    const auto channels = layout ? static_cast<std::uint32_t>(layout->labels.size()) : 5U;
    const auto audio =
        PCMBuffer::make({.sampleRate = 48000, .channelCount = channels, .layout = layout}, kFrames);
    audio->setFrameLength(kFrames);
    for (std::uint32_t c = 0; c < channels; ++c)
      for (std::uint32_t i = 0; i < kFrames; ++i)
        audio->channel(c)[i] = static_cast<float>(i + c) / 64 - 0.5F;
    const auto path = folder() / "a";
    PCMFileWriter writer(path, PCMWriteSettings::make(container, audio->format(), encoding),
                         kFrames);
    writer.write(audio->view());
    writer.commit();
    return path;
  }

  /// The file "b" of the audio of "a", unchanged.
  AudioRewrite::Outcome rewrite(AudioSource& source, AudioRewrite::Options options) const {
    const auto audio = source.makeBuffer(kFrames);
    source.read(*audio);
    const SlicedAudio all(audio->view());
    AtomicFile target(folder() / "b");
    options.isReadBack = true;
    const auto outcome = AudioRewrite::write(options.channel ? all.channel(*options.channel) : all,
                                             source.file(), target, options);
    target.commit();
    return outcome;
  }

  static std::vector<std::vector<float>> samplesOf(AudioSource& source) {
    const auto audio = source.makeBuffer(kFrames + 1);
    source.read(*audio);
    std::vector<std::vector<float>> channels;
    for (std::uint32_t c = 0; c < audio->channelCount(); ++c) {
      const auto samples = audio->view().samples(c);
      channels.emplace_back(samples.begin(), samples.end());
    }
    return channels;
  }
};

TEST_F(AudioRewriteEncodingTest, StoresSamplesAnotherWay) {
  using enum ChannelLabel;
  const std::optional<ChannelLayout> layouts[] = {
      std::nullopt, ChannelLayout::fromTag(ChannelLayoutTags::mono),
      ChannelLayout::fromTag(ChannelLayoutTags::stereo),
      ChannelLayout::fromLabels({left, right, leftSurround, rightSurround, center, lfe})};
  const PCMEncoding encodings[] = {{8, false},  {16, false}, {20, false}, {24, false},
                                   {32, false}, {32, true},  {64, true}};
  for (const AudioContainer container : kAllAudioContainers)
    for (const auto& layout : layouts)
      for (const PCMEncoding& from : encodings)
        for (const PCMEncoding& to : encodings) {
          const bool isPlainAIFF = container == AudioContainer::aiff;
          if (from == to || (isPlainAIFF && (from.isFloat || to.isFloat))) continue;
          SCOPED_TRACE(std::string(displayName(container)) + ", " + from.label() + " to " +
                       to.label() + ", " +
                       (layout ? std::to_string(layout->labels.size()) : "no layout"));
          const auto path = write(container, layout, from);
          const auto source = AudioSource::open(path);
          EXPECT_TRUE(rewrite(*source, {.encoding = to}).hasChangedAudio);
          const auto result = AudioSource::open(folder() / "b");
          EXPECT_EQ(result->identity()->pcmEncoding, to);
          EXPECT_EQ(result->identity()->containerTypeID, fileTypeID(container));
          EXPECT_EQ(result->format(), source->format());
          EXPECT_EQ(result->warnings().size(), 0U);
          EXPECT_EQ(samplesOf(*result), samplesOf(*AudioSource::open(path)));
        }
}

TEST_F(AudioRewriteEncodingTest, IsReadByOthers) {
  test::FFmpegComparison files;
  for (const AudioContainer container : kAllAudioContainers)
    for (const PCMEncoding& to : {PCMEncoding{24, false}, {32, true}, {64, true}})
      for (const auto tag : {ChannelLayoutTags::stereo, ChannelLayoutTags::mpeg51A}) {
        using enum AudioContainer;
        if (container == aiff && to.isFloat) continue;
        const auto layout = ChannelLayout::fromTag(tag);
        const std::string name = std::string(displayName(container)) + " " + to.label() + " " +
                                 std::to_string(layout->labels.size());
        rewrite(*AudioSource::open(write(container, layout, {16, false})), {.encoding = to});
        const auto path = files.folder() / name;
        std::filesystem::rename(folder() / "b", path);
        files.add(name, static_cast<int>(layout->labels.size()));
        // libsndfile does not know BW64, and takes floats in an extensible Wave64 for integers.
        const bool isMisread = container == wave64 && to.isFloat && layout->labels.size() > 2;
        if (container != bw64 && !isMisread) test::expectEqualToLibsndfile(path);
        if (container == wave) test::expectEqualToSoX(path, {"-t", "wav"});
        if (container == aiff) test::expectEqualToSoX(path, {"-t", "aiff"});
        if (container == aifc) test::expectEqualToSoX(path, {"-t", "aifc"});
      }
  files.expectEqual();
}

TEST_F(AudioRewriteEncodingTest, TakesOneChannelAlone) {
  using enum ChannelLabel;
  // In an order that is not the canonical one.
  const auto layout =
      ChannelLayout::fromLabels({left, right, leftSurround, rightSurround, center, lfe});
  for (const AudioContainer container : kAllAudioContainers)
    for (const auto& to : {std::optional<PCMEncoding>{}, std::optional(PCMEncoding{24, false})})
      for (const std::size_t channel : {0U, 2U, 5U}) {
        SCOPED_TRACE(std::string(displayName(container)) + ", " + std::to_string(channel));
        const auto path = write(container, layout, {16, false});
        const auto source = AudioSource::open(path);
        rewrite(*source, {.encoding = to, .channel = channel});
        const auto result = AudioSource::open(folder() / "b");
        EXPECT_EQ(result->format().channelCount, 1U);
        EXPECT_EQ(result->identity()->pcmEncoding, to.value_or(PCMEncoding{16, false}));
        EXPECT_EQ(result->warnings().size(), 0U);
        EXPECT_EQ(
            samplesOf(*result),
            (std::vector<std::vector<float>>{samplesOf(*AudioSource::open(path)).at(channel)}));
      }
}

/// Integers of 32 bits, which no float holds.
TEST_F(AudioRewriteEncodingTest, KeepsTheStoredSamplesOfOneChannel) {
  test::Bytes samples(kFrames * 2 * 4);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::byte>(i * 37);
  const auto path = folder().write("a.wav", test::waveFile({.bits = 32}, samples));
  rewrite(*AudioSource::open(path), {.channel = 1});
  test::Bytes right;
  for (std::size_t i = 4; i < samples.size(); i += 8)
    right.insert(right.end(), samples.begin() + static_cast<std::ptrdiff_t>(i),
                 samples.begin() + static_cast<std::ptrdiff_t>(i) + 4);
  const auto expected =
      folder().write("expected.wav", test::waveFile({.channels = 1, .bits = 32}, right));
  EXPECT_TRUE(test::readFile(folder() / "b") == test::readFile(expected));
}

/// The header stays as it was but for the encoding, and what else is there is carried along.
TEST_F(AudioRewriteEncodingTest, ChangesNothingElseOfTheFile) {
  const auto file = [](std::uint16_t bits, const test::Bytes& audio) {
    const test::WaveFormat format{.channels = 1, .bits = bits, .mask = 0x4, .validBits = bits};
    return test::formFile("RIFF", "WAVE",
                          {{"bext", test::Bytes(602)},
                           {"fmt ", test::waveFormatBody(format)},
                           {"data", audio},
                           {"iXML", test::Bytes(7)}});
  };
  const auto path = folder().write("a.wav", file(24, test::Bytes(3 * kFrames)));
  rewrite(*AudioSource::open(path), {.encoding = PCMEncoding{16, false}});
  const auto expected = folder().write("expected.wav", file(16, test::Bytes(2 * kFrames)));
  EXPECT_TRUE(test::readFile(folder() / "b") == test::readFile(expected));
}

TEST_F(AudioRewriteEncodingTest, RefusesFloatsInAnAIFF) {
  const auto path = write(AudioContainer::aiff, std::nullopt, {16, false});
  EXPECT_THROW(rewrite(*AudioSource::open(path), {.encoding = PCMEncoding::float32}),
               PlatformError);
}

/// Before anything is written the same is said.
TEST_F(AudioRewriteTest, ForeseesItsNotes) {
  for (const test::Bytes& bytes : test::markedFiles()) {
    const auto source = AudioSource::open(folder().write("a", bytes));
    const auto audio = trimmed(*source);
    const AudioRewrite::Options options{.frames = chainOf(*source).frameMap()};
    AtomicFile target(folder() / "b");
    const auto notes = AudioRewrite::write(audio->view(), source->file(), target, options).notes;
    EXPECT_FALSE(notes.empty());
    EXPECT_EQ(
        AudioRewrite::foreseenNotes(source->file(), folder() / "b", *options.frames, true, options),
        notes);
  }
}

TEST_F(AudioRewriteTest, NamesTheTargetWhereTheResultIsTooLarge) {
  constexpr std::uint64_t kHole = 0xFFFFFF00;
  const auto bytes = test::formFile("RIFF", "WAVE",
                                    {{"fmt ", test::waveFormatBody({.channels = 1, .bits = 8})},
                                     {"data", test::Bytes(100)},
                                     {"hole", {}, kHole}});
  const auto path = folder().write("long.wav", bytes);
  std::filesystem::resize_file(path, bytes.size() + kHole);
  auto audio = PCMBuffer::make({.sampleRate = 48000, .channelCount = 1}, 1000);
  audio->setFrameLength(1000);
  AtomicFile target(folder() / "b.wav");
  try {
    AudioRewrite::write(audio->view(), InputFile(path), target);
    ADD_FAILURE() << "was written";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.errorDescription(),
              "b.wav: the result is larger than a WAV file can be; save it as RF64 or BW64");
  }
}

}  // namespace
}  // namespace orvane
