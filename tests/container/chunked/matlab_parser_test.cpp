#include "orvane/container/chunked/matlab_parser.h"

#include <gtest/gtest.h>

#include <string_view>

#include "orvane/platform/error.h"
#include "tests/support/byte_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::ByteWriter;
using enum StoredSample::Kind;

constexpr std::string_view kOther = "The file holds MATLAB variables other than audio";

/// A variable of version 4; `type` is the tens digit of its first number.
void add4(ByteWriter& file, bool isBig, int type, std::string_view name, std::uint64_t rows,
          std::uint64_t columns, const Bytes& data) {
  file.u32(static_cast<std::uint64_t>(type * 10 + (isBig ? 1000 : 0))).u32(rows).u32(columns);
  file.u32(0).u32(name.size() + 1).text(name).u8(0).append(data);
}

Bytes file4(bool isBig, int type, std::uint64_t rows, std::uint64_t columns,
            std::string_view rateName = "samplerate", double rate = 48000) {
  const auto order = isBig ? std::endian::big : std::endian::little;
  ByteWriter file(order);
  add4(file, isBig, 0, rateName, 1, 1, ByteWriter(order).float64(rate).bytes());
  add4(file, isBig, type, "wavedata", rows, columns, Bytes(24));
  return file.bytes();
}

/// A version 5 matrix of numbers of `type`.
void add5(ByteWriter& file, std::uint64_t type, std::string_view name, std::uint64_t rows,
          std::uint64_t columns, std::uint64_t size, const Bytes& data) {
  file.u32(14).u32(48 + name.size() + data.size());
  file.u32(6).u32(8).u32(6).u32(0).u32(5).u32(8).u32(rows).u32(columns);
  file.u32(1).u32(name.size()).text(name).zeros((8 - name.size() % 8) % 8);
  if (size <= 4)
    file.u32(size << 16 | type).append(data);
  else
    file.u32(type).u32(size).append(data);
}

Bytes file5(std::endian order, std::uint64_t type, std::uint64_t rows, std::uint64_t columns) {
  ByteWriter file(order);
  file.text("MATLAB 5.0 MAT-file").zeros(105).u16(0x0100).u16(0x4D49);
  // As 32 bits, which stand beside their size, then 10 + 6 bytes of name and padding.
  ByteWriter rate(order);
  file.u32(14).u32(64);
  file.u32(6).u32(8).u32(6).u32(0).u32(5).u32(8).u32(1).u32(1);
  file.u32(1).u32(10).text("samplerate").zeros(6).u32(4 << 16 | 6).u32(96'000);
  add5(file, type, "wavedata", rows, columns, 24, Bytes(24));
  return file.bytes();
}

class MATLABParser : public testing::Test {
 protected:
  PCMStream parse(const Bytes& bytes) {
    const InputFile file(folder_.write("a.mat", bytes));
    return bytes[0] == std::byte{'M'} ? parseMATLAB5(file, 0) : parseMATLAB4(file, 0);
  }

  std::string failureOf(const Bytes& bytes) {
    return test::openingFailure(folder_.write("a.mat", bytes));
  }

  test::TemporaryDirectory folder_;
};

TEST_F(MATLABParser, TellsTheTypesOfVersion4InBothByteOrders) {
  for (const bool isBig : {false, true}) {
    const auto sample = [&](int type) { return parse(file4(isBig, type, 1, 3)).sample; };
    EXPECT_EQ(sample(0), (StoredSample{floatingPoint, 8, isBig}));
    EXPECT_EQ(sample(1), (StoredSample{floatingPoint, 4, isBig}));
    EXPECT_EQ(sample(2), (StoredSample{signedInteger, 4, isBig}));
    EXPECT_EQ(sample(3), (StoredSample{signedInteger, 2, isBig}));
    EXPECT_EQ(sample(5), (StoredSample{unsignedInteger, 1, false}));
    EXPECT_EQ(failureOf(file4(isBig, 4, 1, 3)),
              "Unsigned samples of 16 bits are not supported in MATLAB files");
    EXPECT_EQ(failureOf(file4(isBig, 6, 1, 3)), kOther);
    EXPECT_EQ(failureOf(file4(isBig, 9, 1, 3)), kOther);
  }
}

TEST_F(MATLABParser, TellsTheTypesOfVersion5InBothByteOrders) {
  for (const auto order : {std::endian::little, std::endian::big}) {
    const bool isBig = order == std::endian::big;
    const auto sample = [&](std::uint64_t type) { return parse(file5(order, type, 1, 3)).sample; };
    EXPECT_EQ(sample(1), (StoredSample{signedInteger, 1, false}));
    EXPECT_EQ(sample(2), (StoredSample{unsignedInteger, 1, false}));
    EXPECT_EQ(sample(3), (StoredSample{signedInteger, 2, isBig}));
    EXPECT_EQ(sample(5), (StoredSample{signedInteger, 4, isBig}));
    EXPECT_EQ(sample(7), (StoredSample{floatingPoint, 4, isBig}));
    EXPECT_EQ(sample(9), (StoredSample{floatingPoint, 8, isBig}));
    EXPECT_EQ(failureOf(file5(order, 6, 1, 3)),
              "Unsigned samples of 32 bits are not supported in MATLAB files");
    EXPECT_EQ(failureOf(file5(order, 15, 1, 3)), kOther);  // compressed
  }
}

TEST_F(MATLABParser, ReadsRateAndChannels) {
  const PCMStream four = parse(file4(false, 3, 2, 6));
  EXPECT_EQ(four.description.dataFormat.sampleRate, 48'000);
  EXPECT_EQ(four.description.dataFormat.channelsPerFrame, 2U);
  EXPECT_EQ(four.frameCount, 6U);
  EXPECT_TRUE(four.description.warnings.empty());
  const PCMStream five = parse(file5(std::endian::big, 9, 3, 1));
  EXPECT_EQ(five.description.dataFormat.sampleRate, 96'000);
  EXPECT_EQ(five.description.dataFormat.channelsPerFrame, 3U);
  EXPECT_EQ(five.frameCount, 1U);
}

TEST_F(MATLABParser, AudioThatEndsEarlyIsUsedAsFarAsItGoes) {
  for (const Bytes& bytes :
       {file4(false, 3, 2, 0xFFFFFFFF), file5(std::endian::little, 3, 2, 99)}) {
    const PCMStream stream = parse(bytes);
    EXPECT_EQ(stream.frameCount, 6U);
    ASSERT_EQ(stream.description.warnings.size(), 1U);
    EXPECT_EQ(stream.description.warnings[0].code, AudioFileWarning::Code::truncatedAudio);
  }
}

TEST_F(MATLABParser, OtherVariablesAreNoAudio) {
  EXPECT_EQ(failureOf(file4(false, 3, 2, 6, "frequency")), kOther);
  EXPECT_EQ(failureOf(file4(false, 3, 2, 6, "samplerate2")), kOther);
  Bytes five = file5(std::endian::little, 3, 2, 6);
  five[180] = std::byte{'S'};
  EXPECT_EQ(failureOf(five), kOther);
}

TEST_F(MATLABParser, ImpossibleFiguresAreRefused) {
  EXPECT_EQ(failureOf(file4(false, 3, 2, 6, "samplerate", 0)),
            "The sample rate of 0 Hz lies outside 100 Hz to 10 MHz");
  EXPECT_EQ(failureOf(file4(true, 0, 4'294'967'295, 6)),
            "The file states 4294967295 channels; at most 1024 can be read");
  EXPECT_EQ(parse(file4(false, 3, 0, 6)).frameCount, 0U);
}

TEST_F(MATLABParser, HeadersCutShortAreRefused) {
  for (const Bytes& whole : {file4(false, 3, 2, 6), file5(std::endian::little, 3, 2, 6)})
    for (std::size_t size = 20; size < whole.size() - 24; ++size) {
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_NE(failureOf(cut), "") << size;
      EXPECT_FALSE(describeAudioFile(folder_ / "a.mat")) << size;
    }
}

}  // namespace
}  // namespace orvane
