#include "orvane/edit/in_place_save.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <random>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/container/pcm_file_writer.h"
#include "orvane/edit/pcm_write_settings.h"
#include "tests/support/container_writer.h"
#include "tests/support/in_child.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using enum ChannelLabel;
using test::Bytes;

class InPlaceSaveTest : public testing::Test {
 protected:
  const test::TemporaryDirectory& folder() const { return folder_; }

  static std::shared_ptr<PCMBuffer> load(const std::filesystem::path& path) {
    return AudioSourceReader::load(path).buffer;
  }

  /// The text with which saving is refused; the file must stay as it is then.
  static std::string refusal(const PCMBuffer& buffer, const std::filesystem::path& path,
                             const InPlaceSave::Options& options = {}) {
    const bool exists = std::filesystem::exists(path);
    const std::string before = exists ? test::readFile(path) : "";
    try {
      InPlaceSave::write(buffer, path, options);
      return {};
    } catch (const InPlaceSaveError& error) {
      EXPECT_EQ(exists ? test::readFile(path) : "", before);
      return error.errorDescription();
    }
  }

  static std::shared_ptr<PCMBuffer> silence(double rate, std::uint32_t channels,
                                            std::uint32_t frames) {
    auto buffer = PCMBuffer::make({.sampleRate = rate, .channelCount = channels}, frames);
    buffer->setFrameLength(frames);
    return buffer;
  }

  /// A file with a chunk on either side of random sample bytes.
  std::filesystem::path wave(const std::string& name, const test::WaveFormat& format,
                             std::size_t audioBytes) const {
    return folder_.write(name, test::formFile("RIFF", "WAVE",
                                              {{"bext", Bytes(603, std::byte{1})},
                                               {"fmt ", test::waveFormatBody(format)},
                                               {"data", randomBytes(audioBytes)},
                                               {"iXML", Bytes(77, std::byte{2})}}));
  }

  static Bytes randomBytes(std::size_t count) {
    std::mt19937 random(9);
    Bytes bytes(count);
    for (std::byte& byte : bytes) byte = static_cast<std::byte>(random());
    return bytes;
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(InPlaceSaveTest, DescribesEveryError) {
  using Error = InPlaceSaveError;
  EXPECT_EQ(Error::unsupportedContainer("mp3").errorDescription(),
            "Orvane writes WAV, AIFF, and CAF in place; \".mp3\" files are saved as a new file.");
  EXPECT_EQ(Error::notAPCMContainer("m4af").errorDescription(),
            "Inside, this file is a m4af container, not WAV, AIFF, or CAF, so it can't be "
            "rewritten in place.");
  EXPECT_EQ(Error::notLinearPCM("aac").errorDescription(),
            "The file's audio isn't linear PCM (aac), so it can't be rewritten in place.");
  EXPECT_EQ(Error::formatMismatch(44100.9, 2, 48000, 1).errorDescription(),
            "The edited audio (48000 Hz, 1 ch) no longer matches the file (44100 Hz, 2 ch).");
  EXPECT_EQ(Error::channelOrderUnknown("L R").errorDescription(),
            "The edited audio's channel order can't be matched to the file's channel layout (L R), "
            "so it can't be written back in place.");
  EXPECT_EQ(Error::notWritable("/a b").errorDescription(), "\"/a b\" isn't writable.");
  EXPECT_EQ(Error::unreadable("gone").errorDescription(), "The source file couldn't be read: gone");
  EXPECT_EQ(Error::writeFailed("full").errorDescription(),
            "Saving failed and the original file was left unchanged: full");
  EXPECT_EQ(Error::writeFailed("full"), Error::writeFailed("full"));
  EXPECT_FALSE(Error::writeFailed("full") == Error::writeFailed("other"));
}

TEST_F(InPlaceSaveTest, KnowsTenExtensions) {
  EXPECT_EQ(InPlaceSave::supportedExtensions().size(), 10U);
  for (const char* extension :
       {"wav", "wave", "bwf", "rf64", "bw64", "w64", "aif", "aiff", "aifc", "caf"})
    EXPECT_TRUE(InPlaceSave::supportedExtensions().contains(extension)) << extension;
}

TEST_F(InPlaceSaveTest, RefusesInTheOrderOfTheChecks) {
  const auto two = silence(48000, 2, 10);
  EXPECT_EQ(refusal(*two, folder() / "x.mp3"),
            InPlaceSaveError::unsupportedContainer("mp3").errorDescription());
  EXPECT_EQ(refusal(*two, folder() / "x"),
            InPlaceSaveError::unsupportedContainer("").errorDescription());
  const std::string noHeader = "the container type couldn't be read from the file header";
  EXPECT_EQ(refusal(*two, folder() / "none.wav"),
            InPlaceSaveError::unreadable(noHeader).errorDescription());
  test::writeFile(folder() / "text.WAV", "this is no audio at all, but it is long enough");
  EXPECT_EQ(refusal(*two, folder() / "text.WAV"),
            InPlaceSaveError::unreadable(noHeader).errorDescription());
  const auto wavePath = wave("a.wav", {}, 400);
  std::filesystem::copy(wavePath, folder() / "a.caf");
  EXPECT_EQ(refusal(*two, folder() / "a.caf"),
            InPlaceSaveError::notAPCMContainer("WAVE").errorDescription());
  const auto law = folder().write(
      "law.wav",
      test::formFile("RIFF", "WAVE",
                     {{"fmt ", test::waveFormatBody({.tag = 7, .channels = 1, .bits = 8})},
                      {"data", Bytes(100)}}));
  EXPECT_EQ(refusal(*silence(48000, 1, 10), law),
            InPlaceSaveError::notLinearPCM("ulaw").errorDescription());
  EXPECT_EQ(refusal(*silence(44100, 2, 10), wavePath),
            InPlaceSaveError::formatMismatch(48000, 2, 44100, 2).errorDescription());
  EXPECT_EQ(refusal(*silence(48000, 3, 10), wavePath),
            InPlaceSaveError::formatMismatch(48000, 2, 48000, 3).errorDescription());
}

TEST_F(InPlaceSaveTest, RefusesRF64InAWAVAndAIFFCInAnAIFF) {
  const auto settings = [](AudioContainer container) {
    return PCMWriteSettings::make(container, {.sampleRate = 48000, .channelCount = 1}, {16, false});
  };
  PCMFileWriter rf64(folder() / "a.wav", settings(AudioContainer::rf64), 0);
  rf64.commit();
  PCMFileWriter aifc(folder() / "a.aif", settings(AudioContainer::aifc), 0);
  aifc.commit();
  const auto one = silence(48000, 1, 10);
  EXPECT_EQ(refusal(*one, folder() / "a.wav"),
            InPlaceSaveError::notAPCMContainer("RF64").errorDescription());
  EXPECT_EQ(refusal(*one, folder() / "a.aif"),
            InPlaceSaveError::notAPCMContainer("AIFC").errorDescription());
}

TEST_F(InPlaceSaveTest, GivesTheIdenticalFileWhenNothingChanged) {
  const std::optional<ChannelLayout> layouts[] = {
      std::nullopt,
      ChannelLayout::fromTag(ChannelLayoutTags::mono),
      ChannelLayout::fromTag(ChannelLayoutTags::stereo),
      ChannelLayout::fromTag(ChannelLayoutTags::mpeg51A),
      ChannelLayout::fromTag(0x007B0006U),  // L C R Ls Rs LFE
      ChannelLayout::fromLabels({left, right, leftSurround, rightSurround, center, lfe}),
      ChannelLayout::fromTag(ChannelLayoutTags::mpeg71C)};
  const char* extensions[] = {"wav", "rf64", "bw64", "w64", "aiff", "aifc", "caf"};
  for (std::size_t kind = 0; kind < kAllAudioContainers.size(); ++kind)
    for (const auto& layout : layouts)
      for (const PCMEncoding encoding : {PCMEncoding{8, false},
                                         {16, false},
                                         {20, false},
                                         {24, false},
                                         {32, false},
                                         {32, true},
                                         {64, true}}) {
        const AudioContainer container = kAllAudioContainers[kind];
        if (encoding.isFloat && container == AudioContainer::aiff) continue;
        const auto path = folder() / (std::string("a.") + extensions[kind]);
        const auto channels = layout ? static_cast<std::uint32_t>(layout->labels.size()) : 5U;
        const auto settings = PCMWriteSettings::make(
            container, {.sampleRate = 48000, .channelCount = channels, .layout = layout}, encoding);
        constexpr std::int64_t kFrames = 333;
        // Bytes that no float could give back: every bit of the samples is random.
        const auto outline = PCMFileWriter::outline(path, settings, kFrames);
        Bytes bytes = outline.head;
        const Bytes audio = randomBytes(static_cast<std::size_t>(outline.audioBytes));
        bytes.insert(bytes.end(), audio.begin(), audio.end());
        bytes.insert(bytes.end(), outline.tail.begin(), outline.tail.end());
        folder().write(path.filename().string(), bytes);
        const std::string before = test::readFile(path);
        SCOPED_TRACE(path.string() + ", " + encoding.label() + ", " + std::to_string(channels));
        auto buffer = load(path);
        EXPECT_FALSE(InPlaceSave::write(*buffer, path).rewrite.hasChangedAudio);
        ASSERT_TRUE(test::readFile(path) == before);

        // One sample of one frame, in whichever channel: no other byte changes.
        buffer->channel(channels - 1)[100] = 0.25F;
        const auto outcome = InPlaceSave::write(*buffer, path);
        EXPECT_TRUE(outcome.rewrite.hasChangedAudio);
        EXPECT_EQ(outcome.rewrite.samples, SampleLosses{});
        const std::string after = test::readFile(path);
        ASSERT_EQ(after.size(), before.size());
        const std::size_t width = outline.sample.bytes;
        const std::size_t first = outline.head.size() + 100 * channels * width;
        for (std::size_t i = 0; i < after.size(); ++i) {
          const bool isEdited = i >= first && i < first + channels * width;
          const bool isEditCount = container == AudioContainer::caf && i == outline.head.size() - 1;
          ASSERT_TRUE(isEdited || isEditCount || after[i] == before[i]) << i;
        }
        EXPECT_EQ(load(path)->channel(channels - 1)[100], 0.25F);
      }
}

TEST_F(InPlaceSaveTest, KeepsStoredSamplesOutsideOfACut) {
  const auto path = wave("a.wav", {.bits = 32}, 1000 * 8);
  const std::string before = test::readFile(path);
  const std::size_t head = before.find("data") + 8;
  const auto whole = load(path);
  auto cut = PCMBuffer::make(whole->format(), 900);
  cut->setFrameLength(900);
  for (std::uint32_t c = 0; c < 2; ++c) {
    std::copy_n(whole->channel(c), 400, cut->channel(c));
    std::copy_n(whole->channel(c) + 500, 500, cut->channel(c) + 400);
  }
  InPlaceSave::write(*cut, path);
  const std::string after = test::readFile(path);
  EXPECT_TRUE(after.substr(head, 400 * 8) == before.substr(head, 400 * 8));
  EXPECT_TRUE(after.substr(head + 400 * 8) == before.substr(head + 500 * 8));
  EXPECT_EQ(load(path)->frameLength(), 900U);
}

TEST_F(InPlaceSaveTest, FollowsLengthWhereverItGoes) {
  for (const std::uint32_t frames : {0U, 1U, 99U, 100U, 101U, 250'000U}) {
    const auto path = wave("a.wav", {.channels = 1, .bits = 24}, 300);
    const auto edited = silence(48000, 1, frames);
    InPlaceSave::write(*edited, path);
    const std::string after = test::readFile(path);
    EXPECT_NE(after.find(std::string(77, '\2')), std::string::npos);
    if (frames == 0) continue;  // is no source
    const auto read = load(path);
    ASSERT_EQ(read->frameLength(), frames);
    EXPECT_TRUE(std::ranges::all_of(read->view().samples(0), [](float x) { return x == 0; }));
    EXPECT_EQ(test::runTool("soxi", {"-s", path.string()}), std::to_string(frames) + "\n");
  }
}

TEST_F(InPlaceSaveTest, CountsWhatItClipped) {
  const auto path = wave("a.wav", {.channels = 1}, 20);
  auto buffer = load(path);
  buffer->channel(0)[3] = 2.0F;
  buffer->channel(0)[4] = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(InPlaceSave::write(*buffer, path).rewrite.samples, (SampleLosses{1, 1}));
}

TEST_F(InPlaceSaveTest, ReplacesNoOtherVersionThanTheOneThatWasRead) {
  const auto path = wave("a.wav", {}, 400);
  const auto version = FileStamp::of(path);
  const auto buffer = load(path);
  std::filesystem::resize_file(path, std::filesystem::file_size(path) + 2);
  EXPECT_EQ(refusal(*buffer, path, {.version = version}),
            InPlaceSaveError::writeFailed("the file was changed by another program meanwhile")
                .errorDescription());
}

TEST_F(InPlaceSaveTest, FollowsASymbolicLink) {
  const auto path = wave("a.wav", {}, 400);
  std::filesystem::create_symlink(path, folder() / "link.wav");
  auto buffer = load(path);
  buffer->channel(0)[0] = 0.5F;
  InPlaceSave::write(*buffer, folder() / "link.wav");
  EXPECT_TRUE(std::filesystem::is_symlink(folder() / "link.wav"));
  EXPECT_EQ(load(path)->channel(0)[0], 0.5F);
}

TEST_F(InPlaceSaveTest, TellsOfOtherNamesOfTheFile) {
  const auto path = wave("a.wav", {}, 400);
  std::filesystem::create_hard_link(path, folder() / "other.wav");
  const std::string before = test::readFile(path);
  auto buffer = load(path);
  buffer->channel(0)[0] = 0.5F;
  EXPECT_EQ(InPlaceSave::write(*buffer, path).metadata.hardLinks, 1U);
  EXPECT_EQ(test::readFile(folder() / "other.wav"), before);
}

TEST_F(InPlaceSaveTest, RefusesWhatTheContainerCannotHold) {
  // A chunk of nearly 4 GiB behind the audio, which is a hole: there is no room for longer audio.
  constexpr std::uint64_t kHole = 0xFFFFFF00;
  const Bytes bytes = test::formFile("RIFF", "WAVE",
                                     {{"fmt ", test::waveFormatBody({.channels = 1, .bits = 8})},
                                      {"data", Bytes(100)},
                                      {"hole", {}, kHole}});
  const auto path = folder().write("long.wav", bytes);
  std::filesystem::resize_file(path, bytes.size() + kHole);
  const auto version = FileStamp::of(path);
  try {
    InPlaceSave::write(*silence(48000, 1, 1000), path);
    ADD_FAILURE() << "was saved";
  } catch (const InPlaceSaveError& error) {
    EXPECT_EQ(error, InPlaceSaveError::writeFailed(
                         "the result is larger than a WAV file can be; save it as RF64 or BW64"));
  }
  EXPECT_EQ(FileStamp::of(path), version);
}

TEST_F(InPlaceSaveTest, NeedsAWritableFolderAndFile) {
  const auto path = wave("a.wav", {}, 400);
  const auto buffer = load(path);
  const auto canonical = std::filesystem::canonical(folder().path());
  ASSERT_EQ(::chmod(folder().path().c_str(), 0555), 0);
  ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
  const auto expectRefused = [&](const std::filesystem::path& what) {
    const auto end = test::runInChild([&] {
      test::becomeNobody();
      return refusal(*buffer, path) ==
                     InPlaceSaveError::notWritable(what.string()).errorDescription()
                 ? 0
                 : 1;
    });
    EXPECT_EQ(end.exitCode, 0) << what;
  };
  expectRefused(canonical);
  ASSERT_EQ(::chmod(folder().path().c_str(), 0777), 0);
  ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
  expectRefused(canonical / "a.wav");
  ASSERT_EQ(::chmod(folder().path().c_str(), 0755), 0);
}

TEST_F(InPlaceSaveTest, GivesTheFilesOwnSettings) {
  const auto path = wave("a.wav", {.bits = 24}, 600);
  const auto settings = InPlaceSave::writeSettings(path, *load(path));
  EXPECT_EQ(settings.fileTypeID, fourCCFrom("WAVE"));
  EXPECT_EQ(settings.linearPCMBitDepth, 24);
  EXPECT_EQ(settings.linearPCMIsFloat, false);
  EXPECT_EQ(settings.channelCount, 2);
}

}  // namespace
}  // namespace orvane
