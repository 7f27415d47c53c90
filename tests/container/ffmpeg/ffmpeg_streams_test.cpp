#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orvane/container/audio_streams.h"
#include "orvane/platform/error.h"
#include "orvane/platform/progress.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using test::Arguments;

class FFmpegStreams : public testing::Test {
 protected:
  /// A film with a picture and three audio streams of 1, 2 and 6 channels, of which `arguments` may
  /// name the default one.
  std::filesystem::path makeFilm(const std::string& name, const Arguments& arguments = {}) {
    const auto file = folder_ / name;
    Arguments words = {
        "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc=duration=1:size=64x48:rate=10"};
    for (const char* layout : {"mono", "stereo", "5.1"}) {
      words.insert(words.end(), {"-f", "lavfi", "-i",
                                 std::string("anoisesrc=duration=1:sample_rate=48000:amplitude=0.2,"
                                             "aformat=channel_layouts=") +
                                     layout});
    }
    words.insert(words.end(), {"-map", "0", "-map", "1", "-map", "2", "-map", "3", "-c:v", "mpeg4",
                               "-c:a", "aac"});
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.push_back(file.string());
    test::runTool("ffmpeg", words);
    return file;
  }

  static std::uint32_t channels(const std::filesystem::path& file,
                                const AudioFileOpenOptions& options = {}) {
    return AudioFile::open(file, options)->description().dataFormat.channelsPerFrame;
  }

  static AudioFileOpenOptions stream(int index) {
    AudioFileOpenOptions options;
    options.streamIndex = index;
    return options;
  }

  test::TemporaryDirectory folder_;
};

TEST_F(FFmpegStreams, AreCountedAmongTheAudioStreams) {
  for (const char* name : {"a.mkv", "a.mp4", "a.mov"}) {
    const auto film = makeFilm(name);
    EXPECT_EQ(channels(film, stream(0)), 1U) << name;
    EXPECT_EQ(channels(film, stream(1)), 2U) << name;
    EXPECT_EQ(channels(film, stream(2)), 6U) << name;
    const auto found = test::readWholeFile(film, stream(2));
    // FFmpeg's program plays the padding of the last packet too.
    auto decoded = test::decodeWithFFmpeg(film, 2);
    ASSERT_LE(found.samples.size(), decoded.size());
    EXPECT_LT(decoded.size() - found.samples.size(), 6 * 1024U);
    decoded.resize(found.samples.size());
    EXPECT_LE(test::largestDifference(found.samples, decoded), 1e-6);
  }
}

TEST_F(FFmpegStreams, AbsentOnesAreNamed) {
  const auto film = makeFilm("a.mkv");
  EXPECT_EQ(test::openingError(film, stream(3)), "There is no audio stream 3; the file holds 3");
  EXPECT_EQ(test::openingError(film, stream(-1)), "There is no audio stream -1; the file holds 3");
}

TEST_F(FFmpegStreams, TheDefaultOneIsTakenWhenNoneIsAskedFor) {
  const auto film = makeFilm(
      "a.mkv", {"-disposition:a:0", "0", "-disposition:a:1", "default", "-disposition:a:2", "0"});
  EXPECT_EQ(channels(film), 2U);
}

TEST_F(FFmpegStreams, PicturesAloneAreNoAudio) {
  const auto file = folder_ / "silent.mp4";
  test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "testsrc=duration=1:size=64x48",
                           "-c:v", "mpeg4", file.string()});
  EXPECT_EQ(test::openingError(file), "The file holds no audio");
  EXPECT_FALSE(describeAudioFile(file));
}

TEST_F(FFmpegStreams, CoverPicturesAreNoStreams) {
  const auto cover = folder_ / "cover.png";
  test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "testsrc=size=600x600", "-frames:v",
                           "1", cover.string()});
  const auto plain = test::encodeNoise(folder_, "plain.mp3");
  const auto covered = folder_ / "covered.mp3";
  test::runTool("ffmpeg", {"-v", "error", "-i", plain.string(), "-i", cover.string(), "-map", "0",
                           "-map", "1", "-c", "copy", "-id3v2_version", "3", covered.string()});
  EXPECT_EQ(test::readWholeFile(covered).samples, test::readWholeFile(plain).samples);
}

TEST_F(FFmpegStreams, LabelsFollowTheStoredOrder) {
  using enum ChannelLabel;
  const auto labels = [&](const std::string& name, const std::string& layout) {
    const auto file =
        test::encodeNoise(folder_, name, {"-af", "aformat=channel_layouts=" + layout});
    const auto description = describeAudioFile(file);
    return description && description->layout ? description->layout->labels
                                              : std::vector<ChannelLabel>{};
  };
  EXPECT_EQ(labels("a.flac", "stereo"), (std::vector{left, right}));
  EXPECT_EQ(labels("b.flac", "5.1"),
            (std::vector{left, right, center, lfe, leftSurround, rightSurround}));
  EXPECT_EQ(labels("c.flac", "7.1"), (std::vector{left, right, center, lfe, rearSurroundLeft,
                                                  rearSurroundRight, leftSurround, rightSurround}));
  EXPECT_EQ(labels("d.m4a", "5.1"),
            (std::vector{left, right, center, lfe, leftSurround, rightSurround}));
  EXPECT_EQ(labels("e.flac", "5.0"),
            (std::vector{left, right, center, leftSurround, rightSurround}));
  EXPECT_EQ(labels("f.ac3", "2.1"), (std::vector{left, right, lfe}));
}

TEST_F(FFmpegStreams, OneOrTwoChannelsNeedNoLayout) {
  using enum ChannelLabel;
  const auto one = describeAudioFile(test::encodeNoise(folder_, "a.wav", {"-c:a", "adpcm_ms"}));
  ASSERT_TRUE(one && one->layout);
  EXPECT_EQ(one->layout->labels, std::vector{center});
  const auto two =
      describeAudioFile(test::encodeNoise(folder_, "b.au", {"-c:a", "pcm_alaw", "-ac", "2"}));
  ASSERT_TRUE(two && two->layout);
  EXPECT_EQ(two->layout->labels, (std::vector{left, right}));
}

class Recorder final : public ProgressObserver {
 public:
  explicit Recorder(int cancelAfter = -1) : cancelAfter_(cancelAfter) {}
  void onProgress(std::string_view stage, double fraction) override {
    EXPECT_EQ(stage, "Reading");
    EXPECT_GE(fraction, last_);
    last_ = fraction;
    ++calls_;
  }
  bool isCancelled() override { return cancelAfter_ >= 0 && calls_ >= cancelAfter_; }
  double last() const { return last_; }
  int calls() const { return calls_; }

 private:
  int cancelAfter_;
  int calls_ = 0;
  double last_ = 0;
};

TEST_F(FFmpegStreams, ReadingIsWatchedToItsEnd) {
  const auto file = test::encodeNoise(folder_, "a.ogg", {}, 6);
  Recorder recorder;
  AudioFileOpenOptions options;
  options.execution.observer = &recorder;
  test::readWholeFile(file, options);
  EXPECT_GT(recorder.calls(), 3);
  EXPECT_EQ(recorder.last(), 1.0);
}

TEST_F(FFmpegStreams, ReadingStopsWhenItIsCancelled) {
  const auto file = test::encodeNoise(folder_, "a.ogg", {}, 6);
  Recorder recorder(2);
  AudioFileOpenOptions options;
  options.execution.observer = &recorder;
  EXPECT_THROW(test::readWholeFile(file, options), Cancelled);
  EXPECT_EQ(recorder.calls(), 2);
}

TEST_F(FFmpegStreams, AreDescribedOneByOne) {
  const auto film = makeFilm("a.mkv", {"-disposition:a:0", "0", "-disposition:a:1", "default"});
  EXPECT_EQ(countAudioStreams(film), (AudioStreamCount{.count = 3, .defaultIndex = 1}));
  std::vector<std::uint32_t> counts;
  for (const auto& description : describeAudioStreams(film))
    counts.push_back(description.dataFormat.channelsPerFrame);
  EXPECT_EQ(counts, (std::vector<std::uint32_t>{1, 2, 6}));
  EXPECT_THROW(countAudioStreams(folder_.write("text", "words")), PlatformError);
}

}  // namespace
}  // namespace orvane
