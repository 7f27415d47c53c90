// What headers say: layouts, sizes beyond four gigabytes, and what a container cannot hold.

#include "orvane/container/pcm_file_outline.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>

#include "orvane/container/audio_file.h"
#include "orvane/container/pcm_file_writer.h"
#include "tests/container/peer_decoding.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using enum ChannelLabel;

struct Asked {
  AudioContainer container = AudioContainer::wave;
  PCMEncoding encoding{24, false};
  double sampleRate = 48000;
  std::int64_t channelCount = 2;
  std::optional<ChannelLayout> layout{};
  std::int64_t frameCount = 100;

  AudioFormatSettings settings() const {
    return {.fileTypeID = fileTypeID(container),
            .formatID = kFormatLinearPCM,
            .sampleRate = sampleRate,
            .channelCount = channelCount,
            .layout = layout,
            .linearPCMBitDepth = encoding.bitDepth,
            .linearPCMIsFloat = encoding.isFloat};
  }
  PCMFileOutline outline() const { return PCMFileWriter::outline("take", settings(), frameCount); }
  /// The sentence with which it is refused; empty when it is not.
  std::string refusal() const {
    try {
      outline();
      return {};
    } catch (const PlatformError& error) {
      EXPECT_EQ(error.errorDescription(), "take: " + error.message());
      return error.message();
    }
  }
};

ChannelLayout layout(std::vector<ChannelLabel> labels) {
  return ChannelLayout::fromLabels(std::move(labels));
}

TEST(PCMFileOutline, RefusesWhatTheContainerCannotHold) {
  EXPECT_EQ((Asked{.sampleRate = 44100.5}.refusal()),
            "WAV states whole sample rates only; a CAF file holds any");
  EXPECT_EQ((Asked{.container = AudioContainer::wave64, .sampleRate = 5e9}.refusal()),
            "Wave64 states whole sample rates only; a CAF file holds any");
  EXPECT_EQ((Asked{.container = AudioContainer::aiff, .sampleRate = 44100.5}.refusal()), "");
  EXPECT_EQ((Asked{.container = AudioContainer::caf, .sampleRate = 44100.5}.refusal()), "");
  EXPECT_EQ((Asked{.container = AudioContainer::aiff, .encoding = {32, true}}.refusal()),
            "AIFF stores integer PCM only; AIFF-C and CAF store floating point too");
  for (const PCMEncoding encoding : {PCMEncoding{16, true}, PCMEncoding{24, true},
                                     PCMEncoding{33, false}, PCMEncoding{64, false}})
    EXPECT_EQ((Asked{.encoding = encoding}.refusal()),
              encoding.label() + " samples cannot be written");
  EXPECT_EQ((Asked{.channelCount = 0}.refusal()), "a file has 1 to 1024 channels");
  EXPECT_EQ((Asked{.channelCount = 1025}.refusal()), "a file has 1 to 1024 channels");
  EXPECT_EQ((Asked{.channelCount = std::int64_t{1} << 40}.refusal()),
            "a file has 1 to 1024 channels");
  EXPECT_EQ((Asked{.channelCount = 1024}.refusal()), "");
  for (const double rate : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(),
                            std::numeric_limits<double>::infinity()})
    EXPECT_EQ((Asked{.container = AudioContainer::caf, .sampleRate = rate}.refusal()),
              "a sample rate is above 0");
}

TEST(PCMFileOutline, RefusesAIFFBeyondTwoGigabytes) {
  for (const auto container : {AudioContainer::aiff, AudioContainer::aifc}) {
    Asked asked{.container = container, .channelCount = 1};
    asked.encoding = {8, false};
    const auto headBytes = static_cast<std::int64_t>(asked.outline().head.size());
    asked.frameCount = std::int64_t{0x7FFFFFFF} + 8 - headBytes - 1;  // and a pad byte
    EXPECT_EQ(asked.refusal(), "");
    asked.frameCount += 2;
    EXPECT_EQ(asked.refusal(), "the audio is longer than " + std::string(displayName(container)) +
                                   " can be (2 GiB); a CAF file can hold it");
  }
}

TEST(PCMFileOutline, TurnsAWAVIntoRF64WhereItsSizesEnd) {
  Asked asked{.encoding = {16, false}, .channelCount = 1};
  constexpr std::int64_t kHeadBytes = 44;
  constexpr std::int64_t kMost = (0xFFFFFFFE - kHeadBytes) / 2;
  asked.frameCount = kMost;
  EXPECT_EQ(asked.outline().fileTypeID, fourCCFrom("WAVE"));
  EXPECT_EQ(asked.outline().head.size(), static_cast<std::size_t>(kHeadBytes));
  asked.frameCount = kMost + 1;
  EXPECT_EQ(asked.outline().fileTypeID, fourCCFrom("RF64"));
}

TEST(PCMFileOutline, KeepsTheHeaderPlainWhereItSaysEverything) {
  const auto headOf = [](PCMEncoding encoding, std::int64_t channels,
                         std::optional<ChannelLayout> labels = {}) {
    return Asked{.encoding = encoding, .channelCount = channels, .layout = std::move(labels)}
        .outline()
        .head.size();
  };
  constexpr std::size_t kPlain = 44, kFloat = 44 + 2 + 12, kExtensible = 44 + 24;
  EXPECT_EQ(headOf({16, false}, 1), kPlain);
  EXPECT_EQ(headOf({8, false}, 2, layout({left, right})), kPlain);
  EXPECT_EQ(headOf({16, false}, 1, layout({mono})), kPlain);
  EXPECT_EQ(headOf({16, false}, 1, layout({center})), kPlain);
  EXPECT_EQ(headOf({32, true}, 2), kFloat);
  EXPECT_EQ(headOf({64, true}, 1), kFloat);
  EXPECT_EQ(headOf({24, false}, 2), kExtensible);
  EXPECT_EQ(headOf({16, false}, 3), kExtensible);
  EXPECT_EQ(headOf({16, false}, 1, layout({lfe})), kExtensible);
  EXPECT_EQ(headOf({16, false}, 2, layout({right, left})), kExtensible);
  EXPECT_EQ(headOf({20, false}, 1), kExtensible);
}

TEST(PCMFileOutline, WarnsOfChannelsThatWAVECannotName) {
  Asked asked{.channelCount = 4,
              .layout = layout({ambisonicW, ambisonicX, ambisonicY, ambisonicZ})};
  ASSERT_EQ(asked.outline().warnings.size(), 1U);
  EXPECT_EQ(asked.outline().warnings[0], "A WAV file cannot name these channels; a CAF file can.");
  asked.container = AudioContainer::caf;
  EXPECT_TRUE(asked.outline().warnings.empty());
  asked.container = AudioContainer::wave;
  asked.layout = ChannelLayout::fromTag(ChannelLayoutTags::discreteInOrder | 4);
  EXPECT_TRUE(asked.outline().warnings.empty());  // they have no names
  asked.layout.reset();
  EXPECT_TRUE(asked.outline().warnings.empty());
}

class WrittenLayouts : public testing::Test {
 protected:
  std::filesystem::path write(const Asked& asked) {
    const auto path = folder_ / ("file" + std::to_string(++files_));
    PCMFileWriter writer(path, asked.settings(), asked.frameCount);
    const std::vector<float> silence(static_cast<std::size_t>(asked.frameCount));
    const std::vector<const float*> channels(static_cast<std::size_t>(asked.channelCount),
                                             silence.data());
    writer.write({channels, silence.size()});
    writer.commit();
    return path;
  }

  /// FFmpeg's name of the layout; empty or a mere count where it names none.
  static std::string namedByFFmpeg(const std::filesystem::path& path) {
    const auto json = nlohmann::json::parse(
        test::runTool("ffprobe", {"-v", "error", "-show_streams", "-of", "json", path.string()}));
    return json["streams"][0].value("channel_layout", "");
  }

  static std::vector<int> namedByLibsndfile(const std::filesystem::path& path) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, decltype(&sf_close)> file(sf_open(path.c_str(), SFM_READ, &info),
                                                             &sf_close);
    std::vector<int> map(static_cast<std::size_t>(info.channels));
    if (sf_command(file.get(), SFC_GET_CHANNEL_MAP_INFO, map.data(),
                   static_cast<int>(map.size() * sizeof(int))) != SF_TRUE)
      return {};
    return map;
  }

 private:
  test::TemporaryDirectory folder_;
  int files_ = 0;
};

TEST_F(WrittenLayouts, AreNamedAlikeByAllWhoNameThem) {
  const struct {
    ChannelLayout layout;
    std::string ffmpeg;
    std::vector<int> sndfile;
  } kCases[] = {{layout({left, right, center}),
                 "3.0",
                 {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER}},
                {layout({left, right, center, lfe, leftSurround, rightSurround}),
                 "5.1",
                 {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER,
                  SF_CHANNEL_MAP_LFE, SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT}},
                {layout({left, right, center, lfe, leftSurround, rightSurround, rearSurroundLeft,
                         rearSurroundRight}),
                 "7.1",
                 {SF_CHANNEL_MAP_LEFT, SF_CHANNEL_MAP_RIGHT, SF_CHANNEL_MAP_CENTER,
                  SF_CHANNEL_MAP_LFE, SF_CHANNEL_MAP_REAR_LEFT, SF_CHANNEL_MAP_REAR_RIGHT,
                  SF_CHANNEL_MAP_SIDE_LEFT, SF_CHANNEL_MAP_SIDE_RIGHT}}};
  int named = 0;
  for (const auto& c : kCases)
    for (const auto container : kAllAudioContainers) {
      const Asked asked{.container = container,
                        .channelCount = static_cast<std::int64_t>(c.layout.labels.size()),
                        .layout = c.layout};
      const auto path = write(asked);
      SCOPED_TRACE(std::string(displayName(container)) + " " + c.ffmpeg);
      // Our own reader names every channel, in whichever order they lie.
      const auto ours = AudioFile::open(path)->description().layout;
      ASSERT_TRUE(ours);
      EXPECT_TRUE(std::is_permutation(ours->labels.begin(), ours->labels.end(),
                                      c.layout.labels.begin(), c.layout.labels.end()));
      const bool isWave = container != AudioContainer::aiff && container != AudioContainer::aifc &&
                          container != AudioContainer::caf;
      const std::string ffmpeg = namedByFFmpeg(path);
      if (isWave) {
        EXPECT_EQ(ffmpeg, c.ffmpeg);
      }
      if (isWave && container != AudioContainer::wave64 && container != AudioContainer::bw64) {
        EXPECT_EQ(namedByLibsndfile(path), c.sndfile);
        ++named;
      }
    }
  EXPECT_GT(named, 5);
}

TEST_F(WrittenLayouts, AreKeptToTheTagWhereTheContainerHasOne) {
  for (const auto container : {AudioContainer::caf, AudioContainer::aiff, AudioContainer::aifc})
    for (const ChannelLayoutTag tag :
         {ChannelLayoutTags::mpeg30A, ChannelLayoutTags::quadraphonic, ChannelLayoutTags::mpeg51A,
          0x007A0006U, 0x007B0006U, 0x007C0006U, ChannelLayoutTags::mpeg71A,
          ChannelLayoutTags::mpeg71C, ChannelLayoutTags::discreteInOrder | 5}) {
      const auto wanted = ChannelLayout::fromTag(tag);
      ASSERT_TRUE(wanted) << tag;
      const auto path = write({.container = container,
                               .channelCount = static_cast<std::int64_t>(wanted->labels.size()),
                               .layout = wanted});
      EXPECT_EQ(AudioFile::open(path)->description().layout, wanted) << tag;
    }
}

TEST_F(WrittenLayouts, AreDescribedWhereNoTagSaysThem) {
  const ChannelLayout odd = layout({right, lfe2, topBackCenter, narration});
  ASSERT_EQ(odd.tag, ChannelLayoutTags::useChannelDescriptions);
  for (const auto container : {AudioContainer::caf, AudioContainer::aiff})
    EXPECT_EQ(AudioFile::open(write({.container = container, .channelCount = 4, .layout = odd}))
                  ->description()
                  .layout,
              odd);
}

TEST_F(WrittenLayouts, AreAbsentWhereNoneWasGiven) {
  for (const auto container : kAllAudioContainers)
    for (const std::int64_t channels : {3, 4, 5, 6, 8, 17})
      EXPECT_FALSE(AudioFile::open(write({.container = container, .channelCount = channels}))
                       ->description()
                       .layout)
          << displayName(container) << " " << channels;
}

/// A header and nothing but holes behind it: 4.1 GiB that take no space.
TEST(LongFiles, OpenInFFmpegWithTheirLength) {
  const test::TemporaryDirectory folder;
  constexpr double kBytes = 4.1 * (1ULL << 30);
  constexpr std::int64_t kFrames = static_cast<std::int64_t>(kBytes) / 6;
  for (const auto container : {AudioContainer::wave, AudioContainer::rf64, AudioContainer::bw64,
                               AudioContainer::wave64, AudioContainer::caf}) {
    SCOPED_TRACE(displayName(container));
    const PCMFileOutline outline = Asked{.container = container, .frameCount = kFrames}.outline();
    const auto path = folder.write("long", outline.head);
    std::filesystem::resize_file(path,
                                 outline.head.size() + outline.audioBytes + outline.tail.size());
    EXPECT_EQ(AudioFile::open(path)->frameLength(), kFrames);
    const auto json = nlohmann::json::parse(
        test::runTool("ffprobe", {"-v", "error", "-show_streams", "-of", "json", path.string()}));
    EXPECT_EQ(json["streams"][0].value("duration_ts", std::int64_t{0}), kFrames);
  }
}

}  // namespace
}  // namespace orvane
