#include "orvane/edit/audio_rewrite.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "orvane/audio/audio_source.h"
#include "orvane/edit/edit_chain.h"
#include "orvane/edit/in_place_save.h"
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
