#include "orvane/audio/audio_source_reader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "orvane/platform/host_memory.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"
#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using AudioSourceReader::Failure;
using test::Bytes;
using enum ChannelLabel;

constexpr std::int64_t kGiB = std::int64_t{1} << 30;

class SourceReader : public testing::Test {
 protected:
  /// A file whose header states `frames` frames of `channels` 8-bit channels, all of them there, in
  /// a hole that takes no room.
  std::filesystem::path writeSparse(std::string_view name, std::uint64_t frames,
                                    std::uint16_t channels) {
    const std::uint64_t bytes = frames * channels;
    const Bytes head = test::formFile(
        "RF64", "WAVE",
        {{.id = "ds64", .body = test::longSizesBody(bytes + 72, bytes, frames)},
         {.id = "fmt ", .body = test::waveFormatBody({.channels = channels, .bits = 8})},
         {.id = "data", .statedSize = 0xFFFFFFFF}});
    const auto path = folder_.write(name, head);
    std::filesystem::resize_file(path, head.size() + bytes);
    return path;
  }

  void expectFailure(const std::filesystem::path& path, Failure::Case failureCase,
                     std::string_view text) {
    try {
      AudioSourceReader::load(path);
      FAIL() << "loaded";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.failureCase(), failureCase);
      EXPECT_EQ(failure.url(), path);
      EXPECT_EQ(failure.errorDescription(), text);
    }
  }

  test::TemporaryDirectory folder_;
};

TEST_F(SourceReader, LoadsAFileWithItsDepthAndLabel) {
  const auto values = test::testValues({.bits = 24, .bytes = 3}, 100, 2);
  const auto path =
      folder_.write("a.wav", test::waveFile({.sampleRate = 44100, .bits = 24},
                                            test::storedSamples({.bits = 24, .bytes = 3}, values)));
  const auto loaded = AudioSourceReader::load(path);
  EXPECT_EQ(loaded.fileFormatLabel, "WAV");
  EXPECT_EQ(loaded.bitDepth, 24);
  EXPECT_FALSE(loaded.rawFormat);
  EXPECT_EQ(loaded.buffer->sampleRate(), 44100);
  test::expectSamples(*loaded.buffer, values);
}

TEST_F(SourceReader, PutsChannelsIntoCanonicalOrder) {
  // Stored L R Ls Rs C LFE.
  const test::SampleSpec spec{.order = std::endian::big};
  const std::vector<double> frame = {0.1, 0.2, 0.3, 0.4, 0.5, 0.6};
  const auto path = folder_.write(
      "a.aiff",
      test::formFile("FORM", "AIFF",
                     {{.id = "COMM", .body = test::commonBody(6, 1, 16, 48000)},
                      {.id = "CHAN", .body = test::layoutBody(0x007A0006)},
                      {.id = "SSND", .body = test::soundBody(test::storedSamples(spec, frame))}}));
  const auto loaded = AudioSourceReader::load(path);
  ASSERT_EQ(loaded.buffer->channelCount(), 6U);
  EXPECT_EQ(loaded.buffer->format().layout->labels,
            (std::vector{left, right, center, lfe, leftSurround, rightSurround}));
  const std::vector<float> expected = {0.1F, 0.2F, 0.5F, 0.6F, 0.3F, 0.4F};
  for (std::uint32_t c = 0; c < 6; ++c)
    EXPECT_NEAR(loaded.buffer->channel(c)[0], expected[c], 1e-4) << c;
}

TEST_F(SourceReader, AFileWithoutFramesIsEmpty) {
  const auto path = folder_.write("none.wav", test::waveFile({}, {}));
  expectFailure(path, Failure::Case::empty, "Empty or unreadable file: none.wav");
  const auto bare = folder_.write(
      "bare.wav",
      test::formFile("RIFF", "WAVE", {{.id = "fmt ", .body = test::waveFormatBody({})}}));
  expectFailure(bare, Failure::Case::empty, "Empty or unreadable file: bare.wav");
}

TEST_F(SourceReader, AFileWithoutChannelsIsEmpty) {
  const auto path = folder_.write("none.wav", test::waveFile({.channels = 0}, Bytes(100)));
  expectFailure(path, Failure::Case::empty, "Empty or unreadable file: none.wav");
}

TEST_F(SourceReader, MoreThanTheLimitsIsTooLarge) {
  const ScopedHostMemory memory({.physicalBytes = 1024 * kGiB});
  const auto path = writeSparse("huge.wav", std::uint64_t{1} << 30, 1);
  expectFailure(path, Failure::Case::tooLarge,
                "Audio file is too large or its header is invalid: huge.wav");
}

TEST_F(SourceReader, MemoryThatCannotBeHadIsAnError) {
  std::string overcommit;
  std::ifstream("/proc/sys/vm/overcommit_memory") >> overcommit;
  // Four tebibytes. A machine told to promise any memory would grant it, and fail when it is used.
  const ScopedHostMemory memory({.physicalBytes = 64 * 1024 * kGiB});
  const auto path = writeSparse("vast.wav", (std::uint64_t{1} << 30) - 1, 1024);
  if (overcommit == "1") {
    EXPECT_GT(AudioFile::open(path)->frameLength(), 0);
  } else {
    expectFailure(path, Failure::Case::allocation, "Could not allocate buffer for vast.wav");
  }
}

TEST_F(SourceReader, PlatformErrorsPassUnchanged) {
  try {
    AudioSourceReader::load(folder_ / "missing.wav");
    FAIL() << "loaded";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.errorDescription(), "missing.wav: No such file or directory");
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
  }
}

TEST_F(SourceReader, FailuresCompareByCaseAndFile) {
  EXPECT_EQ(Failure(Failure::Case::empty, "a/b.wav"), Failure(Failure::Case::empty, "a/b.wav"));
  EXPECT_FALSE(Failure(Failure::Case::empty, "a") == Failure(Failure::Case::tooLarge, "a"));
  EXPECT_FALSE(Failure(Failure::Case::empty, "a") == Failure(Failure::Case::empty, "b"));
  EXPECT_STREQ(Failure(Failure::Case::empty, "a/b.wav").what(), "Empty or unreadable file: b.wav");
}

TEST_F(SourceReader, AMisnamedFileIsLabelledWithBothNames) {
  const auto path = folder_ / "song.wav";
  test::runTool("ffmpeg", {"-v", "error", "-f", "lavfi", "-i", "sine=d=1", "-c:a", "libmp3lame",
                           "-f", "mp3", path.string()});
  const auto loaded = AudioSourceReader::load(path);
  EXPECT_EQ(loaded.fileFormatLabel, "MP3, named .wav");
  EXPECT_EQ(loaded.bitDepth, 0);
  EXPECT_EQ(loaded.buffer->frameLength(), 44'100U);
}

TEST_F(SourceReader, ReadsHeaderlessPCMAsDeclaredWhateverTheExtension) {
  const auto values = test::testValues({}, 50, 2);
  const auto path = folder_.write("take.mp3", test::storedSamples({}, values));
  const RawPCMFormat format{
      .sampleRate = 32000, .channelCount = 2, .encoding = RawPCMFormat::Encoding::int16};
  const auto loaded = AudioSourceReader::load(path, format);
  EXPECT_EQ(loaded.fileFormatLabel, "RAW s16le");
  EXPECT_EQ(loaded.bitDepth, 16);
  EXPECT_EQ(loaded.rawFormat, format);
  EXPECT_EQ(loaded.buffer->sampleRate(), 32000);
  test::expectSamples(*loaded.buffer, values);
}

TEST_F(SourceReader, GivesTheDepthOfEveryRawEncoding) {
  const auto path = folder_.write("raw", Bytes(64));
  using enum RawPCMFormat::Encoding;
  for (const auto& [encoding, bits] : {std::pair{uint8, 8},
                                       {int16, 16},
                                       {int24Packed, 24},
                                       {int24In32, 24},
                                       {int32, 32},
                                       {float32, 32},
                                       {float64, 64}}) {
    RawPCMFormat format{.sampleRate = 48000, .channelCount = 1, .encoding = encoding};
    format.trailingBytesTolerance = 2;
    EXPECT_EQ(AudioSourceReader::load(path, format).bitDepth, bits);
  }
}

TEST_F(SourceReader, RawSourcesFailWithErrorsOfTheirOwn) {
  const RawPCMFormat format{.sampleRate = 48000, .channelCount = 2};
  EXPECT_THROW(AudioSourceReader::load(folder_ / "missing", format), RawPCMImportError);
  EXPECT_THROW(AudioSourceReader::load(folder_.write("none", ""), format), RawPCMImportError);
}

TEST_F(SourceReader, ReportsFindings) {
  Bytes bytes = test::waveFile({}, Bytes(40));
  bytes.resize(bytes.size() - 8);
  const auto path = folder_.write("cut.wav", bytes);
  std::vector<AudioFileWarning> warnings;
  const auto loaded =
      AudioSourceReader::load(path, {}, {.execution = {.threadCount = 2}, .warnings = &warnings});
  EXPECT_EQ(loaded.buffer->frameLength(), 8U);
  ASSERT_EQ(warnings.size(), 1U);
  EXPECT_EQ(warnings[0].code, AudioFileWarning::Code::truncatedAudio);
  EXPECT_EQ(warnings[0].text, "The file ends before its audio does; what is there is used.");
}

class Canceller : public ProgressObserver {
 public:
  void onProgress(std::string_view /*stage*/, double /*fraction*/) override {}
  bool isCancelled() override { return true; }
};

TEST_F(SourceReader, CanBeCancelled) {
  Canceller canceller;
  const auto path = folder_.write("a.wav", test::waveFile({}, Bytes(40)));
  EXPECT_THROW(AudioSourceReader::load(path, {}, {.execution = {.observer = &canceller}}),
               Cancelled);
}

TEST_F(SourceReader, RefusesAStreamThatIsNotThere) {
  const auto path = folder_.write("a.wav", test::waveFile({}, Bytes(40)));
  EXPECT_EQ(AudioSourceReader::load(path, {}, {.streamIndex = 0}).buffer->frameLength(), 10U);
  EXPECT_THROW(AudioSourceReader::load(path, {}, {.streamIndex = 1}), PlatformError);
}

}  // namespace
}  // namespace orvane
