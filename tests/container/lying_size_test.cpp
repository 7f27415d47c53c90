// Sizes in headers that are wrong, open or absurd: what is there is read, with a warning.

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::RawChunk;
using Codes = std::vector<AudioFileWarning::Code>;
using enum AudioFileWarning::Code;

constexpr std::uint64_t k31 = 0x7FFFFFFF;
constexpr std::uint64_t k32 = 0xFFFFFFFF;
constexpr std::uint64_t k63 = std::uint64_t{1} << 63;

class LyingSize : public testing::Test {
 protected:
  /// Ten frames of 16-bit stereo are read, with these warnings.
  void expectTenFrames(const Bytes& bytes, const Codes& warnings) {
    const auto path = folder_.write("lying", bytes);
    const auto file = AudioFile::open(path);
    EXPECT_EQ(file->frameLength(), 10);
    EXPECT_EQ(test::warningCodes(*file), warnings);
    const auto buffer = test::readWhole(*file);
    ASSERT_TRUE(buffer);
    test::expectSamples(*buffer, values_);
  }

  const RawChunk format_{.id = "fmt ", .body = test::waveFormatBody({})};
  const std::vector<double> values_ = test::testValues({}, 10, 2);
  const Bytes samples_ = test::storedSamples({}, values_);
  const Bytes bigSamples_ = test::storedSamples({.order = std::endian::big}, values_);
  test::TemporaryDirectory folder_;
};

TEST_F(LyingSize, Wave) {
  for (const auto& [size, code] : {std::pair{std::uint64_t{0}, openDataSize},
                                   {k31, openDataSize},
                                   {k32, openDataSize},
                                   {std::uint64_t{0x80000000}, truncatedAudio},
                                   {std::uint64_t{0xFFFFFFFE}, truncatedAudio},
                                   {std::uint64_t{41}, truncatedAudio}}) {
    SCOPED_TRACE(size);
    expectTenFrames(test::formFile("RIFF", "WAVE",
                                   {format_, {.id = "data", .body = samples_, .statedSize = size}}),
                    {code});
  }
}

TEST_F(LyingSize, LongWave) {
  for (const auto& [size, code] : {std::pair{std::uint64_t{0}, openDataSize},
                                   {UINT64_MAX, openDataSize},
                                   {k31, truncatedAudio},
                                   {k32, truncatedAudio},
                                   {k63, truncatedAudio},
                                   {k63 - 1, truncatedAudio}}) {
    SCOPED_TRACE(size);
    expectTenFrames(test::formFile("RF64", "WAVE",
                                   {{.id = "ds64", .body = test::longSizesBody(size, size, size)},
                                    format_,
                                    {.id = "data", .body = samples_, .statedSize = k32}}),
                    {code});
  }
}

TEST_F(LyingSize, LongWaveWithoutLongSizes) {
  expectTenFrames(test::formFile("RF64", "WAVE",
                                 {format_, {.id = "data", .body = samples_, .statedSize = k32}}),
                  {openDataSize});
  for (const std::size_t bytes : {0U, 1U, 15U, 27U}) {
    Bytes sizes = test::longSizesBody(0, samples_.size(), 10);
    sizes.resize(bytes);
    const bool isUsable = bytes >= 16;
    expectTenFrames(test::formFile("BW64", "WAVE",
                                   {{.id = "ds64", .body = sizes},
                                    format_,
                                    {.id = "data", .body = samples_, .statedSize = k32}}),
                    isUsable ? Codes{} : Codes{openDataSize});
  }
}

TEST_F(LyingSize, TableOfLongSizesThatIsNotThere) {
  Bytes sizes = test::longSizesBody(0, samples_.size(), 10);
  for (std::size_t i = 24; i < 28; ++i) sizes[i] = std::byte{0xFF};
  expectTenFrames(test::formFile("RF64", "WAVE",
                                 {{.id = "ds64", .body = sizes},
                                  format_,
                                  {.id = "data", .body = samples_, .statedSize = k32}}),
                  {});
}

TEST_F(LyingSize, Wave64) {
  for (const auto& [size, code] : {std::pair{std::uint64_t{0}, openDataSize},
                                   {std::uint64_t{1}, openDataSize},
                                   {std::uint64_t{23}, openDataSize},
                                   {UINT64_MAX, openDataSize},
                                   {k31, truncatedAudio},
                                   {k32, truncatedAudio},
                                   {k63, truncatedAudio},
                                   {UINT64_MAX - 1, truncatedAudio}}) {
    SCOPED_TRACE(size);
    expectTenFrames(
        test::wave64File(
            {format_, {.id = "data", .body = samples_, .statedSize = size, .hasPad = false}}),
        {code});
  }
}

TEST_F(LyingSize, Aiff) {
  for (const auto& [size, code] : {std::pair{std::uint64_t{0}, openDataSize},
                                   {k31, openDataSize},
                                   {k32, openDataSize},
                                   {std::uint64_t{0x80000000}, truncatedAudio}}) {
    SCOPED_TRACE(size);
    expectTenFrames(
        test::formFile("FORM", "AIFF",
                       {{.id = "COMM", .body = test::commonBody(2, 10, 16, 48000)},
                        {.id = "SSND", .body = test::soundBody(bigSamples_), .statedSize = size}}),
        {code});
  }
}

TEST_F(LyingSize, AiffFrameCount) {
  for (const std::uint32_t frames : {11U, 0x7FFFFFFFU, 0xFFFFFFFFU})
    expectTenFrames(test::formFile("FORM", "AIFF",
                                   {{.id = "COMM", .body = test::commonBody(2, frames, 16, 48000)},
                                    {.id = "SSND", .body = test::soundBody(bigSamples_)}}),
                    {truncatedAudio});
}

TEST_F(LyingSize, Caf) {
  for (const auto& [size, codes] : {std::pair{std::uint64_t{0}, Codes{openDataSize}},
                                    {UINT64_MAX, Codes{}},
                                    {UINT64_MAX - 1, Codes{openDataSize}},
                                    {k63, Codes{openDataSize}},
                                    {k31, Codes{truncatedAudio}},
                                    {k32, Codes{truncatedAudio}},
                                    {k63 - 1, Codes{truncatedAudio}}}) {
    SCOPED_TRACE(size);
    expectTenFrames(
        test::cafFile({{.id = "desc", .body = test::cafDescriptionBody(48000, 2, {})},
                       {.id = "data", .body = test::cafDataBody(samples_), .statedSize = size}}),
        codes);
  }
}

TEST_F(LyingSize, Au) {
  for (const auto& [size, codes] : {std::pair{0U, Codes{openDataSize}},
                                    {0xFFFFFFFFU, Codes{}},
                                    {0x7FFFFFFFU, Codes{truncatedAudio}},
                                    {41U, Codes{truncatedAudio}}}) {
    SCOPED_TRACE(size);
    expectTenFrames(test::auFile(3, 48000, 2, bigSamples_, std::endian::big, size), codes);
  }
}

TEST_F(LyingSize, FormSizeDoesNotMatter) {
  for (const std::uint32_t size : {0U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    Bytes bytes = test::waveFile({}, samples_);
    for (std::size_t i = 0; i < 4; ++i) bytes[4 + i] = static_cast<std::byte>(size >> (8 * i));
    expectTenFrames(bytes, {});
  }
}

TEST_F(LyingSize, AudioBeforeItsFormat) {
  expectTenFrames(test::formFile("RIFF", "WAVE", {{.id = "data", .body = samples_}, format_}),
                  {unusualLayout});
  expectTenFrames(test::formFile("FORM", "AIFF",
                                 {{.id = "SSND", .body = test::soundBody(bigSamples_)},
                                  {.id = "COMM", .body = test::commonBody(2, 10, 16, 48000)}}),
                  {});
}

TEST_F(LyingSize, OnlyTheFirstOfSeveralAudioChunksCounts) {
  expectTenFrames(
      test::formFile(
          "RIFF", "WAVE",
          {format_, {.id = "data", .body = samples_}, {.id = "data", .body = Bytes(400)}}),
      {severalDataChunks});
  expectTenFrames(test::formFile("FORM", "AIFF",
                                 {{.id = "COMM", .body = test::commonBody(2, 10, 16, 48000)},
                                  {.id = "SSND", .body = test::soundBody(bigSamples_)},
                                  {.id = "SSND", .body = test::soundBody(Bytes(400))}}),
                  {severalDataChunks});
}

TEST_F(LyingSize, OddChunksWithoutPad) {
  expectTenFrames(test::formFile("RIFF", "WAVE",
                                 {{.id = "LIST", .body = Bytes(7), .hasPad = false},
                                  format_,
                                  {.id = "bext", .body = Bytes(3), .hasPad = false},
                                  {.id = "data", .body = samples_}}),
                  {unusualLayout});
  expectTenFrames(test::formFile("FORM", "AIFF",
                                 {{.id = "NAME", .body = Bytes(5), .hasPad = false},
                                  {.id = "COMM", .body = test::commonBody(2, 10, 16, 48000)},
                                  {.id = "SSND", .body = test::soundBody(bigSamples_)}}),
                  {unusualLayout});
}

TEST_F(LyingSize, AudioThatIsCutOffAnywhere) {
  const Bytes whole = test::waveFile({}, samples_);
  for (std::size_t kept = 0; kept < samples_.size(); ++kept) {
    const auto path = folder_.write(
        "cut.wav", Bytes(whole.begin(), whole.begin() + 44 + static_cast<long>(kept)));
    const auto file = AudioFile::open(path);
    EXPECT_EQ(file->frameLength(), static_cast<std::int64_t>(kept / 4));
    EXPECT_EQ(test::warningCodes(*file), Codes{truncatedAudio});
  }
}

}  // namespace
}  // namespace orvane
