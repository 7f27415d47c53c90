// Stretches that belong to no packet: zeros that a recorder or a file system left behind, foreign
// data between two frames.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>

#include "tests/container/ffmpeg/damaged_files.h"
#include "tests/support/in_child.h"
#include "tests/support/random.h"
#include "tests/support/sanitized.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using test::Arguments;
using Code = AudioFileWarning::Code;

constexpr std::size_t kMiB = std::size_t{1} << 20;

struct GappedFile {
  std::string file;
  Arguments arguments{};
};

std::ostream& operator<<(std::ostream& out, const GappedFile& gapped) {
  return out << gapped.file;
}

class FFmpegGap : public test::DamagedFiles {
 protected:
  static std::string noise(std::size_t size) {
    test::Random random(3);
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random.next());
    return bytes;
  }

  /// Ends at the gap, says so, and takes no more than what the audio and a bounded gap justify.
  void expectEnd(const std::filesystem::path& file, std::int64_t frames) {
    const auto end = test::runInChild([&] {
      const rlimit limit{15, 15};  // seconds of work
      setrlimit(RLIMIT_CPU, &limit);
      const long before = test::peakMemoryKiB();
      describeAudioFile(file);
      const auto found = test::readWholeFile(file);
      if (!found.hasWarning(Code::truncatedAudio)) return 1;
      // The parsers may take what follows for one more frame.
      if (found.frames() < frames || found.frames() > frames + 8192) return 2;
      if (found.frames() != found.promisedFrames) return 3;
      return test::peakMemoryKiB() - before < 180 * 1024 || test::isSanitized() ? 0 : 4;
    });
    EXPECT_EQ(end.signal, 0);
    EXPECT_EQ(end.exitCode, 0);
  }
};

class FFmpegZerosBehind : public FFmpegGap, public testing::WithParamInterface<GappedFile> {};

/// 100 MB of zeros took seconds to hours and up to 444 MB; 800 MB behind a FLAC ended the process.
TEST_P(FFmpegZerosBehind, EndTheFile) {
  const auto file = encodeNoise(folder_, GetParam().file, GetParam().arguments);
  const std::int64_t frames = test::readWholeFile(file).frames();
  std::filesystem::resize_file(file, std::filesystem::file_size(file) + 900 * kMiB);
  expectEnd(file, frames);
}

INSTANTIATE_TEST_SUITE_P(OfEveryKind, FFmpegZerosBehind,
                         testing::Values(GappedFile{"a.flac"}, GappedFile{"a.mp3"},
                                         GappedFile{"a.ac3"}, GappedFile{"a.aac"},
                                         GappedFile{"flac.mka", {"-c:a", "flac"}},
                                         GappedFile{"pcm.mka", {"-c:a", "pcm_s16le"}},
                                         GappedFile{"a.avi"}, GappedFile{"a.ts"},
                                         GappedFile{"a.flv", {"-ar", "44100"}}),
                         [](const auto& tested) { return test::wordOf(tested.param.file); });

TEST_F(FFmpegGap, OfForeignDataEndsTheFile) {
  const std::string audio = encode("a.flac");
  const std::int64_t frames = test::readWholeFile(write(audio)).frames();
  expectEnd(write(audio + noise(120 * kMiB)), frames);
}

TEST_F(FFmpegGap, OfSomeMegabytesIsReadOver) {
  for (const char* name : {"a.flac", "a.mp3", "a.ac3"}) {
    SCOPED_TRACE(name);
    const std::string audio = encode(name);
    const std::int64_t frames = test::readWholeFile(write(audio)).frames();
    const auto found = test::readWholeFile(write(audio + std::string(8 * kMiB, '\0') + audio));
    EXPECT_GT(found.frames(), frames + frames / 2);
    EXPECT_FALSE(found.hasWarning(Code::truncatedAudio));
  }
}

TEST_F(FFmpegGap, IsNotAPictureBeforeTheAudio) {
  constexpr std::size_t kPictureBytes = 24 * kMiB;
  std::string tag("ID3\4\0\0", 6);
  for (int shift = 21; shift >= 0; shift -= 7)
    tag += static_cast<char>(kPictureBytes >> shift & 127);
  for (const std::string& picture : {std::string(kPictureBytes, '\0'), noise(kPictureBytes)}) {
    const std::string audio = encode("a.mp3");
    const std::int64_t frames = test::readWholeFile(write(audio)).frames();
    const auto found = test::readWholeFile(write(tag + picture + audio));
    EXPECT_EQ(found.frames(), frames);
    EXPECT_TRUE(found.description.warnings.empty());
  }
}

/// Packets of other streams lead somewhere, too.
TEST_F(FFmpegGap, IsNotAPauseOfTheSoundOfAVideo) {
  for (const char* name : {"a.mkv", "a.avi", "a.mov", "a.nut"}) {
    SCOPED_TRACE(name);
    const auto file = folder_ / name;
    // Two seconds of picture, 21 MB, before the sound begins.
    test::runTool("ffmpeg", {"-v",
                             "error",
                             "-y",
                             "-f",
                             "lavfi",
                             "-i",
                             "testsrc=size=800x600:rate=15:duration=3",
                             "-itsoffset",
                             "2",
                             "-f",
                             "lavfi",
                             "-i",
                             "sine=frequency=997:sample_rate=48000:duration=1",
                             "-c:v",
                             "rawvideo",
                             "-pix_fmt",
                             "yuv420p",
                             "-c:a",
                             "pcm_s16le",
                             file.string()});
    const auto found = test::readWholeFile(file);
    EXPECT_GE(found.frames(), 48000);
    EXPECT_FALSE(found.hasWarning(Code::truncatedAudio));
  }
}

/// Asks for the end after some questions.
class Impatience final : public ProgressObserver {
 public:
  explicit Impatience(int questions) : questionsLeft_(questions) {}
  void onProgress(std::string_view /*stage*/, double /*fraction*/) override {}
  bool isCancelled() override { return --questionsLeft_ < 0; }

 private:
  int questionsLeft_;
};

/// The observer was only asked between two decoded frames: what led to none could not be stopped.
TEST_F(FFmpegGap, IsLeftWhenTheObserverAsksForIt) {
  const std::string audio = encode("a.flac");
  const auto file = write(audio + std::string(12 * kMiB, '\0') + audio);
  for (const int questions : {0, 1, 5, 50}) {
    Impatience opening(questions);
    EXPECT_THROW(AudioFile::open(file, {.execution = {.observer = &opening}})->frameLength(),
                 Cancelled);
  }
  Impatience describing(1);
  EXPECT_THROW(AudioFile::describe(file, &describing), Cancelled);
  EXPECT_TRUE(describeAudioFile(file));
}

}  // namespace
}  // namespace orvane
