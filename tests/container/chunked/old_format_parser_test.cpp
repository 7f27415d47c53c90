#include "orvane/container/chunked/old_format_parser.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/error.h"
#include "tests/support/byte_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;
using test::Bytes;
using test::ByteWriter;

Bytes paf(std::uint64_t format, std::uint64_t rate = 48'000, std::uint64_t channels = 2) {
  ByteWriter file(std::endian::big);
  file.text(" paf").u32(0).u32(0).u32(rate).u32(format).u32(channels);
  return file.zeros(2048 - file.size() + 24).bytes();
}

Bytes sampleVision(std::uint64_t frames) {
  ByteWriter file;
  file.text("SOUND SAMPLE DATA 2.1 ").zeros(90).u32(frames).zeros(40);
  return file.zeros(2 + 8 * 11 + 8 * 14 + 1).u32(32'000).zeros(8).bytes();
}

Bytes sndtool(std::uint64_t size) {
  ByteWriter file;
  file.text("SOUND\x1A").u16(0).u32(size).u32(0).u32(size).u16(11'025);
  return file.zeros(124 - file.size() + 30).bytes();
}

Bytes tx16w(std::uint64_t rate, std::uint64_t attack = 0, std::uint64_t repeat = 0) {
  return ByteWriter()
      .text("LM8953")
      .zeros(16)
      .u8(0xC9)
      .u8(rate)
      .u16(0)
      .u8(attack)
      .u16(0)
      .u8(repeat)
      .u16(0)
      .zeros(30)
      .bytes();
}

Bytes instrument(std::uint64_t samples, int note, int tune, std::uint64_t type) {
  ByteWriter file;
  file.text("Extended Instrument: ").zeros(296 - file.size()).u16(samples).u32(20).zeros(8).u8(64);
  file.u8(static_cast<std::uint64_t>(tune)).u8(type).u8(128).u8(static_cast<std::uint64_t>(note));
  return file.zeros(43).bytes();
}

Bytes psionRecord(std::uint64_t encoding) {
  ByteWriter file;
  file.u32(0x10000037).u32(0x1000006D).u32(0x1000007E).u32(0).u32(20);
  file.u8(4).u32(0x10000089).u32(37).u32(0x10000052).u32(40).zeros(3);
  return file.u32(4000).u32(encoding).zeros(30).bytes();
}

Bytes ringTone(std::uint64_t encoding) {
  return ByteWriter(std::endian::big)
      .u32(0)
      .u16(0)
      .text("\1\0\0\0"sv)
      .zeros(6)
      .text("ring.bin")
      .zeros(8)
      .u16(encoding)
      .zeros(500)
      .bytes();
}

/// Two objects: one of `foreignSize` bytes that is not audio, then an audio stream's.
Bytes asfStream(std::uint64_t foreignSize = 40) {
  constexpr std::string_view kHeader =
      "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\0\xAA\0\x62\xCE\x6C"sv;
  ByteWriter file;
  file.text("$H").zeros(10).text(kHeader).u64(200).u32(2).u16(0x0201);
  file.zeros(16).u64(foreignSize).zeros(16);
  file.u64(0x11CFA9B7B7DC0791).u64(0x6553200CC000E68E).u64(100).u64(0x11CF5B4DF8699E40);
  return file.zeros(46).u16(0x0161).u16(2).u32(44'100).zeros(50).bytes();
}

Bytes textTable(std::string_view text) {
  return ByteWriter().text(text).bytes();
}

class OldFormatParserTest : public testing::Test {
 protected:
  StreamDescription formatOf(const Bytes& bytes) {
    const auto found = describeAudioFile(folder_.write("a.wav", bytes));
    return found ? found->dataFormat : StreamDescription{};
  }

  std::string failureOf(const Bytes& bytes) {
    return test::openingFailure(folder_.write("a.wav", bytes));
  }

  std::unique_ptr<AudioFile> open(const Bytes& bytes) {
    return AudioFile::open(folder_.write("a.wav", bytes));
  }

  test::TemporaryDirectory folder_;
};

TEST_F(OldFormatParserTest, ReadsWhatIsPlainPCM) {
  EXPECT_EQ(open(paf(0))->frameLength(), 6);
  EXPECT_EQ(open(paf(2))->frameLength(), 12);
  EXPECT_EQ(open(sampleVision(20))->frameLength(), 20);
  EXPECT_EQ(open(sampleVision(20))->processingFormat().sampleRate, 32'000);
  EXPECT_EQ(open(sndtool(30))->frameLength(), 30);
  EXPECT_EQ(open(sndtool(30))->processingFormat().sampleRate, 11'025);
}

TEST_F(OldFormatParserTest, TellsWhatItCannotRead) {
  EXPECT_EQ(failureOf(paf(1)), "PAF files of 24 bits can be identified but not read");
  EXPECT_EQ(failureOf(tx16w(1)), "TX16W files can be identified but not read");
  EXPECT_EQ(failureOf(instrument(1, 0, 0, 0)), "XI files can be identified but not read");
  EXPECT_EQ(failureOf(psionRecord(0)), "Psion records can be identified but not read");
  EXPECT_EQ(failureOf(ringTone(0)), "Ring tones of this kind can be identified but not read");
  EXPECT_EQ(failureOf(textTable("; Sample Rate 8000\n; Channels 1\n")),
            "Text files of samples can be identified but not read");
}

TEST_F(OldFormatParserTest, RefusesEncodingsThatItDoesNotKnow) {
  for (const Bytes& bytes : {paf(3), psionRecord(7), ringTone(3)}) {
    EXPECT_EQ(failureOf(bytes), "The file's encoding is not known");
    EXPECT_EQ(formatOf(bytes), StreamDescription{});
  }
}

TEST_F(OldFormatParserTest, TakesTheRateOfATX16WFromEitherPlace) {
  EXPECT_DOUBLE_EQ(formatOf(tx16w(1)).sampleRate, 1e5 / 3);
  EXPECT_EQ(formatOf(tx16w(2)).sampleRate, 50'000);
  EXPECT_DOUBLE_EQ(formatOf(tx16w(3)).sampleRate, 5e4 / 3);
  EXPECT_DOUBLE_EQ(formatOf(tx16w(0, 0x07, 0x53)).sampleRate, 1e5 / 3);
  EXPECT_EQ(formatOf(tx16w(4, 0x10, 0x00)).sampleRate, 50'000);
  EXPECT_DOUBLE_EQ(formatOf(tx16w(99, 0xF6, 0x52)).sampleRate, 5e4 / 3);
  EXPECT_EQ(failureOf(tx16w(0, 0, 0)), "The file states no sample rate");
}

TEST_F(OldFormatParserTest, TakesTheRateOfAnInstrumentFromItsTuning) {
  EXPECT_DOUBLE_EQ(formatOf(instrument(1, 0, 0, 0)).sampleRate, 8363);
  EXPECT_DOUBLE_EQ(formatOf(instrument(1, 12, 0, 0)).sampleRate, 16'726);
  EXPECT_NEAR(formatOf(instrument(1, -1, -128, 0)).sampleRate, 8363 * 0.890899, 0.01);
  EXPECT_EQ(describeAudioFile(folder_.write("a", instrument(1, 0, 0, 16)))->sourceBitDepth, 16);
  EXPECT_EQ(failureOf(instrument(0, 0, 0, 0)), "The file holds no audio");
}

TEST_F(OldFormatParserTest, FindsTheRecordAmongPsionsSections) {
  EXPECT_EQ(formatOf(psionRecord(0)).formatID, fourCCFrom("alaw"));
  EXPECT_EQ(formatOf(psionRecord(0x100001A1)).formatID, fourCCFrom("ima4"));
  Bytes other = psionRecord(0);
  other[29] = std::byte{0};
  EXPECT_EQ(failureOf(other), "The file holds no audio");
}

TEST_F(OldFormatParserTest, TellsTheEncodingOfARingTone) {
  EXPECT_EQ(formatOf(ringTone(0)).formatID, fourCCFrom("ulaw"));
  EXPECT_EQ(formatOf(ringTone(8)).formatID, fourCCFrom("alaw"));
}

TEST_F(OldFormatParserTest, FindsTheAudioOfANetworkStream) {
  const auto format = formatOf(asfStream());
  EXPECT_EQ(format.formatID, fourCCFrom("wma2"));
  EXPECT_EQ(format.channelsPerFrame, 2U);
  EXPECT_EQ(format.sampleRate, 44'100);
  EXPECT_EQ(failureOf(asfStream()), "ASF network streams can be identified but not read");
  for (const std::uint64_t size :
       {std::uint64_t{0}, std::uint64_t{23}, std::uint64_t{4096}, UINT64_MAX})
    EXPECT_EQ(failureOf(asfStream(size)), "The file holds no audio") << size;
}

TEST_F(OldFormatParserTest, TextTablesMustStateRateAndChannels) {
  const auto format = formatOf(textTable("; Sample Rate 44100\r\n; Channels 2\r\n 0 0.5 0.5\r\n"));
  EXPECT_EQ(format.sampleRate, 44'100);
  EXPECT_EQ(format.channelsPerFrame, 2U);
  for (const auto text : {"; Sample Rate 44100\n", "; Sample Rate \n; Channels 2\n",
                          "; Sample Rate x\n; Channels 2\n", "; Sample Rate 1\n; Channels 1e9\n",
                          "; Sample Rate nan\n; Channels nan\n", "; Sample Rate -5\n; Channels 2"})
    EXPECT_EQ(failureOf(textTable(text)), "The file does not describe its audio") << text;
}

TEST_F(OldFormatParserTest, ImpossibleFiguresAreRefused) {
  EXPECT_EQ(failureOf(paf(0, 0)), "The sample rate of 0 Hz lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(failureOf(paf(0, 48'000, 65'535)),
            "The file states 65535 channels; at most 1024 can be read");
  EXPECT_EQ(open(paf(0, 48'000, 0))->frameLength(), 0);
}

TEST_F(OldFormatParserTest, SizesThatLieAreMadeGood) {
  EXPECT_EQ(open(sndtool(0xFFFFFFFF))->frameLength(), 30);
  EXPECT_EQ(test::warningCodes(*open(sndtool(0xFFFFFFFF))),
            std::vector{AudioFileWarning::Code::truncatedAudio});
  EXPECT_EQ(open(sndtool(0))->frameLength(), 30);
  EXPECT_EQ(test::warningCodes(*open(sndtool(0))),
            std::vector{AudioFileWarning::Code::openDataSize});
  // The rate of these stands behind the samples.
  EXPECT_EQ(failureOf(sampleVision(0xFFFFFFFF)), "The file's header is cut short");
}

TEST_F(OldFormatParserTest, HeadersCutShortAreRefused) {
  const auto expectRefused = [&](const Bytes& whole, std::size_t needed, std::size_t signature) {
    for (std::size_t size = signature; size < needed; ++size) {
      EXPECT_NE(failureOf({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)}), "");
      EXPECT_FALSE(describeAudioFile(folder_ / "a.wav")) << size;
    }
    EXPECT_TRUE(describeAudioFile(folder_.write("a.wav", whole)));
  };
  expectRefused(paf(0), 24, 4);
  expectRefused(sampleVision(20), 112 + 4 + 40 + 202 + 5, 18);
  expectRefused(sndtool(30), 22, 6);
  expectRefused(tx16w(0, 0x06, 0x52), 30, 6);
  expectRefused(instrument(1, 0, 0, 0), 298 + 17, 21);
  expectRefused(psionRecord(0), 48, 12);
  expectRefused(ringTone(0), 34, 25);
  expectRefused(asfStream(), 42 + 40 + 86, 28);
}

}  // namespace
}  // namespace orvane
