// Headers that cannot be used: one clear sentence, no crash, and no more memory than the bytes
// there justify.

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::openingFailure;
using test::RawChunk;

class BadHeader : public testing::Test {
 protected:
  std::string failureOf(const Bytes& bytes) { return openingFailure(folder_.write("bad", bytes)); }

  std::string failureOfWave(const Bytes& formatBody) {
    return failureOf(test::formFile(
        "RIFF", "WAVE", {{.id = "fmt ", .body = formatBody}, {.id = "data", .body = Bytes(1000)}}));
  }

  std::int64_t framesOf(const Bytes& bytes) {
    return AudioFile::open(folder_.write("bad", bytes))->frameLength();
  }

  test::TemporaryDirectory folder_;
};

/// A sound file of each container, with every chunk that its parser reads.
std::vector<std::pair<std::string, Bytes>> soundFiles() {
  const Bytes samples(24);
  const RawChunk format{.id = "fmt ", .body = test::waveFormatBody({.mask = 3})};
  const RawChunk layout{.id = "CHAN", .body = test::layoutBody(0, 0, {1, 2})};
  return {
      {"wav", test::formFile("RIFF", "WAVE", {format, {.id = "data", .body = samples}})},
      {"rf64", test::formFile("RF64", "WAVE",
                              {{.id = "ds64", .body = test::longSizesBody(0, 24, 6)},
                               format,
                               {.id = "data", .body = samples, .statedSize = 0xFFFFFFFF}})},
      {"w64", test::wave64File({format, {.id = "data", .body = samples}})},
      {"aiff", test::formFile("FORM", "AIFF",
                              {layout,
                               {.id = "COMM", .body = test::commonBody(2, 6, 16, 48000)},
                               {.id = "SSND", .body = test::soundBody(samples)}})},
      {"aifc", test::formFile("FORM", "AIFC",
                              {{.id = "COMM", .body = test::commonBody(2, 6, 16, 48000, "sowt")},
                               {.id = "SSND", .body = test::soundBody(samples)}})},
      {"caf", test::cafFile({{.id = "desc", .body = test::cafDescriptionBody(48000, 2, {})},
                             {.id = "chan", .body = test::layoutBody(0, 0, {1, 2})},
                             {.id = "data", .body = test::cafDataBody(samples)}})},
      {"au", test::auFile(3, 48000, 2, samples)}};
}

TEST_F(BadHeader, EveryCutGivesASentenceOrWhatIsThere) {
  for (const auto& [name, bytes] : soundFiles()) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      SCOPED_TRACE(name + " cut to " + std::to_string(size));
      const auto path = folder_.write(
          "cut." + name, Bytes(bytes.begin(), bytes.begin() + static_cast<long>(size)));
      try {
        const auto file = AudioFile::open(path);
        EXPECT_LE(file->frameLength(), 6);
        EXPECT_TRUE(test::readWhole(*file));
      } catch (const PlatformError& error) {
        EXPECT_GT(error.message().size(), 10U);
      }
      describeAudioFile(path);
    }
    EXPECT_EQ(AudioFile::open(folder_.write("whole", bytes))->frameLength(), 6) << name;
  }
}

TEST_F(BadHeader, MoreChannelsThanCanBeReadAreNoDescriptionEither) {
  const auto most = folder_.write("most.au", test::auFile(3, 48000, 1024, Bytes(2048)));
  EXPECT_EQ(AudioFile::describe(most).dataFormat.channelsPerFrame, 1024U);
  const auto many = folder_.write("many.au", test::auFile(3, 48000, 1025, Bytes(2050)));
  EXPECT_THROW(AudioFile::describe(many), PlatformError);
  EXPECT_FALSE(describeAudioFile(many));
}

TEST_F(BadHeader, EveryByteMayBeWrong) {
  for (const auto& [name, bytes] : soundFiles()) {
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      for (const int value : {0x00, 0x7F, 0xFF}) {
        Bytes changed = bytes;
        changed[at] = static_cast<std::byte>(value);
        SCOPED_TRACE(name + ", byte " + std::to_string(at) + " = " + std::to_string(value));
        try {
          const auto file = AudioFile::open(folder_.write("changed", changed));
          // Never more audio than bytes.
          ASSERT_LE(file->frameLength(), static_cast<std::int64_t>(bytes.size()));
          EXPECT_TRUE(test::readWhole(*file));
        } catch (const PlatformError& error) {
          EXPECT_GT(error.message().size(), 10U);
        }
      }
    }
  }
}

TEST_F(BadHeader, NoFormat) {
  const RawChunk data{.id = "data", .body = Bytes(8)};
  EXPECT_EQ(failureOf(test::formFile("RIFF", "WAVE", {data})),
            "The file does not describe its audio");
  EXPECT_EQ(failureOf(test::wave64File({data})), "The file does not describe its audio");
  EXPECT_EQ(failureOf(test::cafFile({data})), "The file does not describe its audio");
  EXPECT_EQ(failureOf(test::formFile("FORM", "AIFF", {{.id = "SSND", .body = Bytes(16)}})),
            "The file does not describe its audio");
}

TEST_F(BadHeader, FormatsThatAreTooShort) {
  for (const std::size_t size : {0U, 1U, 2U, 13U})
    EXPECT_EQ(failureOfWave(Bytes(size)), "The file's header is cut short") << size;
  for (const std::size_t size : {0U, 1U, 17U})
    EXPECT_EQ(failureOf(test::formFile("FORM", "AIFF", {{.id = "COMM", .body = Bytes(size)}})),
              "The file's header is cut short");
  for (const std::size_t size : {0U, 1U, 31U})
    EXPECT_EQ(failureOf(test::cafFile({{.id = "desc", .body = Bytes(size)}})),
              "The file's header is cut short");
}

TEST_F(BadHeader, FormatsThatAreTooLong) {
  Bytes body = test::waveFormatBody({});
  body.resize(65'536);
  EXPECT_EQ(framesOf(test::formFile(
                "RIFF", "WAVE", {{.id = "fmt ", .body = body}, {.id = "data", .body = Bytes(8)}})),
            2);
}

TEST_F(BadHeader, ExtensibleFormatWithoutItsExtension) {
  Bytes body = test::waveFormatBody({.mask = 3});
  for (const std::size_t size : {16U, 18U, 39U}) {
    body.resize(size);
    EXPECT_EQ(
        framesOf(test::formFile("RIFF", "WAVE",
                                {{.id = "fmt ", .body = body}, {.id = "data", .body = Bytes(8)}})),
        2);
    body = test::waveFormatBody({.mask = 3});
  }
}

TEST_F(BadHeader, NoChannels) {
  EXPECT_EQ(framesOf(test::waveFile({.channels = 0}, Bytes(1000))), 0);
  EXPECT_EQ(framesOf(test::waveFile({.channels = 0, .blockAlign = 4}, Bytes(1000))), 0);
  EXPECT_EQ(framesOf(test::auFile(3, 48000, 0, Bytes(1000))), 0);
  EXPECT_EQ(framesOf(test::cafFile({{.id = "desc", .body = test::cafDescriptionBody(48000, 0, {})},
                                    {.id = "data", .body = test::cafDataBody(Bytes(10))}})),
            0);
  EXPECT_EQ(framesOf(test::formFile("FORM", "AIFF",
                                    {{.id = "COMM", .body = test::commonBody(0, 9, 16, 48000)},
                                     {.id = "SSND", .body = test::soundBody(Bytes(18))}})),
            0);
}

TEST_F(BadHeader, TooManyChannels) {
  EXPECT_EQ(failureOfWave(test::waveFormatBody({.channels = 65'535, .bits = 8})),
            "The file states 65535 channels; at most 1024 can be read");
  EXPECT_EQ(failureOf(test::auFile(3, 48000, 0xFFFFFFFF, Bytes(100))),
            "The file states 4294967295 channels; at most 1024 can be read");
  // Beyond 2^32 bytes a frame.
  EXPECT_EQ(failureOf(test::auFile(7, 48000, 0x20000001, Bytes(100))),
            "The file states 536870913 channels; at most 1024 can be read");
}

TEST_F(BadHeader, RatesThatNoAudioHas) {
  const auto rateFailure = [&](double rate) {
    return failureOf(test::cafFile({{.id = "desc", .body = test::cafDescriptionBody(rate, 2, {})},
                                    {.id = "data", .body = test::cafDataBody(Bytes(8))}}));
  };
  EXPECT_EQ(failureOfWave(test::waveFormatBody({.sampleRate = 0})),
            "The sample rate of 0 Hz lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(rateFailure(99.5), "The sample rate of 99.5 Hz lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(rateFailure(10'000'001),
            "The sample rate of 10000001 Hz lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(rateFailure(-48000), "The sample rate of -48000 Hz lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(rateFailure(std::nan("")),
            "The sample rate without a finite value lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(rateFailure(INFINITY),
            "The sample rate without a finite value lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(rateFailure(100), "");
  EXPECT_EQ(rateFailure(10'000'000), "");
}

TEST_F(BadHeader, DepthsThatNoSampleHas) {
  EXPECT_EQ(failureOfWave(test::waveFormatBody({.bits = 0})),
            "Samples of 0 bits are not supported");
  EXPECT_EQ(failureOfWave(test::waveFormatBody({.bits = 65})),
            "Samples of 65 bits are not supported");
  EXPECT_EQ(failureOfWave(test::waveFormatBody({.bits = 65'535})),
            "Samples of 65535 bits are not supported");
  EXPECT_EQ(failureOfWave(test::waveFormatBody({.tag = 3, .bits = 24})),
            "Samples of 24 bits are not supported");
}

TEST_F(BadHeader, EndlessChainsAreLeftInTime) {
  test::ByteWriter writer;
  writer.text("RIFF").u32(0xFFFFFFFF).text("WAVE");
  for (int i = 0; i < 1'000'000; ++i) writer.text("JUNK").u32(0);
  EXPECT_EQ(failureOf(writer.bytes()), "The file does not describe its audio");
}

TEST_F(BadHeader, SoundOffsetBeyondTheSound) {
  Bytes sound = test::soundBody(Bytes(16));
  for (std::size_t i = 0; i < 4; ++i) sound[i] = std::byte{0xFF};
  EXPECT_EQ(framesOf(test::formFile("FORM", "AIFF",
                                    {{.id = "COMM", .body = test::commonBody(2, 4, 16, 48000)},
                                     {.id = "SSND", .body = sound}})),
            0);
}

}  // namespace
}  // namespace orvane
