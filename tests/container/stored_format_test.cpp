#include "orvane/container/stored_format.h"

#include <gtest/gtest.h>

#include "orvane/container/pcm_file_outline.h"
#include "tests/container/chunked/followed_file.h"

namespace orvane {
namespace {

using test::Bytes;
using test::WaveFormat;
using Change = StoredFormat::Change;

constexpr PCMEncoding kInt8{8, false};
constexpr PCMEncoding kInt16{16, false};
constexpr PCMEncoding kInt24{24, false};
constexpr PCMEncoding kFloat64{64, true};

class StoredFormatTest : public testing::Test {
 protected:
  static constexpr std::int64_t kFrames = 5;

  StoredFormat formatOf(const Bytes& bytes, const Change& change) const {
    const InputFile file(folder_.write("file", bytes));
    return storedFormat(file, test::parsedStream(file), change, kFrames);
  }
  /// The changed description of the audio; absent when it stays.
  std::optional<Bytes> header(const Bytes& bytes, const Change& change) const {
    const StoredFormat format = formatOf(bytes, change);
    if (format.changes.chunkChanges.empty()) return std::nullopt;
    EXPECT_EQ(format.changes.chunkChanges.size(), 1U);
    return format.changes.chunkChanges.front().second;
  }

 private:
  test::TemporaryDirectory folder_;
};

Bytes waveOf(const Bytes& format, std::string_view form = "RIFF") {
  std::vector<test::RawChunk> chunks = {{"fmt ", format}, {"data", Bytes(48)}};
  if (form == "RF64") chunks.insert(chunks.begin(), {"ds64", test::longSizesBody(0, 48, 2)});
  return test::formFile(form, "WAVE", chunks);
}
Bytes wave(const WaveFormat& format) {
  return waveOf(test::waveFormatBody(format));
}
Bytes aiff(std::string_view type, const Bytes& common) {
  return test::formFile("FORM", type, {{"COMM", common}, {"SSND", test::soundBody(Bytes(48))}});
}
Bytes caf(const test::SampleSpec& spec) {
  return test::cafFile(
      {{"desc", test::cafDescriptionBody(48000, 2, spec)}, {"data", test::cafDataBody(Bytes(48))}});
}
Bytes with(Bytes bytes, std::size_t at, std::initializer_list<int> values) {
  for (const int value : values) bytes[at++] = static_cast<std::byte>(value);
  return bytes;
}

TEST_F(StoredFormatTest, LeavesTheHeaderAloneWithoutAChange) {
  const StoredFormat format = formatOf(wave({.bits = 24}), {});
  EXPECT_EQ(format.sample, SampleEncoding::signedInteger(3));
  EXPECT_EQ(format.changes, MetadataChanges{});
}

TEST_F(StoredFormatTest, GivesAPlainWaveFormatWhatFloatsNeed) {
  const StoredFormat format = formatOf(wave({.bits = 16}), {.encoding = PCMEncoding::float32});
  EXPECT_EQ(format.sample, SampleEncoding::floatingPoint(4));
  EXPECT_EQ(format.dataFormat.bytesPerFrame, 8U);
  Bytes floats = test::waveFormatBody({.tag = 3, .bits = 32});
  floats.resize(18);
  ASSERT_EQ(format.changes.chunkChanges.size(), 1U);
  EXPECT_EQ(format.changes.chunkChanges[0].second, floats);
  ASSERT_EQ(format.changes.newChunks.size(), 1U);
  EXPECT_EQ(format.changes.newChunks[0].first, fourCCFrom("fact"));
  EXPECT_EQ(format.changes.newChunks[0].second, with(Bytes(4), 0, {kFrames}));

  // Back to integers neither is taken away, and bytes of others stay.
  const Bytes longer = with(floats, 16, {1, 0});
  Bytes expected = test::waveFormatBody({.bits = 24});
  expected.insert(expected.end(), longer.begin() + 16, longer.end());
  EXPECT_EQ(header(waveOf(longer), {.encoding = kInt24}), expected);
}

TEST_F(StoredFormatTest, KnowsTheFrameCountOfFloatsInEveryWave) {
  const Bytes format = test::waveFormatBody({});
  const std::pair<Bytes, Bytes> files[] = {
      {waveOf(format, "RF64"), with(Bytes(4), 0, {kFrames})},
      {waveOf(test::waveFormatBody({}, std::endian::big), "RIFX"), with(Bytes(4), 3, {kFrames})},
      {test::wave64File({{"fmt ", format}, {"data", Bytes(48)}}), with(Bytes(8), 0, {kFrames})}};
  for (const auto& [bytes, count] : files) {
    const auto added = formatOf(bytes, {.encoding = kFloat64}).changes.newChunks;
    ASSERT_EQ(added.size(), 1U);
    EXPECT_EQ(added[0].second, count);
  }
  const Bytes counted =
      test::formFile("RIFF", "WAVE", {{"fmt ", format}, {"fact", Bytes(4)}, {"data", Bytes(48)}});
  EXPECT_TRUE(formatOf(counted, {.encoding = kFloat64}).changes.newChunks.empty());
}

TEST_F(StoredFormatTest, ChangesSubFormatAndValidBitsOfAnExtensibleWave) {
  for (const bool isAmbisonic : {false, true}) {
    const WaveFormat before{.bits = 24, .mask = 0x33, .validBits = 20, .isAmbisonic = isAmbisonic};
    const WaveFormat after{
        .tag = 3, .bits = 64, .mask = 0x33, .validBits = 64, .isAmbisonic = isAmbisonic};
    EXPECT_EQ(header(wave(before), {.encoding = kFloat64}), test::waveFormatBody(after));
    EXPECT_EQ(header(wave(after), {.encoding = kInt8}),
              test::waveFormatBody(
                  {.bits = 8, .mask = 0x33, .validBits = 8, .isAmbisonic = isAmbisonic}));
  }
  EXPECT_EQ(formatOf(wave({.bits = 16}), {.encoding = kInt8}).sample,
            SampleEncoding::unsignedInteger(1));
}

TEST_F(StoredFormatTest, ChangesTheSubFormatOfRIFXHoweverItStands) {
  const Bytes before =
      test::waveFormatBody({.bits = 16, .mask = 3, .validBits = 16}, std::endian::big);
  const Bytes after =
      test::waveFormatBody({.tag = 3, .bits = 64, .mask = 3, .validBits = 64}, std::endian::big);
  EXPECT_EQ(header(waveOf(before, "RIFX"), {.encoding = kFloat64}), after);
  const auto turned = [](const Bytes& body, int tag) {
    return with(body, 24, {0, 0, 0, tag, 0, 0, 0, 0x10});
  };
  EXPECT_EQ(header(waveOf(turned(before, 1), "RIFX"), {.encoding = kFloat64}), turned(after, 3));
  EXPECT_TRUE(formatOf(waveOf(before, "RIFX"), {.encoding = kInt24}).sample.isBigEndian);
}

TEST_F(StoredFormatTest, NamesTheCompressionOfAIFFC) {
  const auto common = [](int bits, std::string_view type, std::string_view name) {
    Bytes body = test::commonBody(2, 12, bits, 48000, type);
    body.resize(22);
    const Bytes text = test::ByteWriter().u8(name.size()).text(name).bytes();
    body.insert(body.end(), text.begin(), text.end());
    body.resize(body.size() + body.size() % 2);
    return body;
  };
  const Bytes floats = common(64, "fl64", "64-bit floating point");
  EXPECT_EQ(header(aiff("AIFC", common(16, "sowt", "")), {.encoding = kFloat64}), floats);
  EXPECT_EQ(header(aiff("AIFC", floats), {.encoding = kInt24}),
            common(24, "NONE", "not compressed"));
  EXPECT_EQ(formatOf(aiff("AIFC", common(16, "sowt", "")), {.encoding = kInt24}).sample,
            SampleEncoding::signedInteger(3, true));
  EXPECT_EQ(header(aiff("AIFF", test::commonBody(2, 8, 24, 48000)), {.encoding = kInt16}),
            test::commonBody(2, 8, 16, 48000));
  EXPECT_THROW(header(aiff("AIFF", test::commonBody(2, 8, 24, 48000)), {.encoding = kFloat64}),
               UnwritableFormat);
}

TEST_F(StoredFormatTest, KeepsTheByteOrderOfCAF) {
  for (const auto order : {std::endian::little, std::endian::big}) {
    const test::SampleSpec integers{.bits = 24, .bytes = 3, .order = order};
    const test::SampleSpec floats{.bits = 32, .bytes = 4, .isFloat = true, .order = order};
    EXPECT_EQ(header(caf(integers), {.encoding = PCMEncoding::float32}),
              test::cafDescriptionBody(48000, 2, floats));
    EXPECT_EQ(header(caf(floats), {.encoding = kInt24}),
              test::cafDescriptionBody(48000, 2, integers));
    EXPECT_EQ(formatOf(caf(floats), {.encoding = kInt24}).sample,
              SampleEncoding::signedInteger(3, order == std::endian::big));
  }
}

TEST_F(StoredFormatTest, IsOfOneChannelThatIsForNoLoudspeaker) {
  const Change one{.isOneChannel = true};
  EXPECT_EQ(header(wave({.bits = 24, .mask = 3, .validBits = 20}), one),
            test::waveFormatBody({.channels = 1, .bits = 24, .mask = 0, .validBits = 20}));
  EXPECT_EQ(header(wave({.bits = 24, .blockAlign = 8}), one),
            test::waveFormatBody({.channels = 1, .bits = 24, .blockAlign = 4}));
  EXPECT_EQ(header(aiff("AIFC", test::commonBody(2, 12, 16, 48000, "sowt")), one),
            test::commonBody(1, 12, 16, 48000, "sowt"));
  const test::SampleSpec spec{.bits = 20, .bytes = 3};
  EXPECT_EQ(header(caf(spec), one), test::cafDescriptionBody(48000, 1, spec));
}

TEST_F(StoredFormatTest, DropsWhatSpeaksOfAllChannels) {
  const Bytes layout = test::layoutBody(ChannelLayoutTags::stereo);
  const auto changes = [&](const Bytes& bytes) {
    return formatOf(bytes, {.isOneChannel = true}).changes;
  };
  using Changed = decltype(MetadataChanges::chunkChanges);
  const Changed withoutLayout = {{0, test::cafDescriptionBody(48000, 1, {})}, {1, std::nullopt}};
  EXPECT_EQ(changes(test::cafFile({{"desc", test::cafDescriptionBody(48000, 2, {})},
                                   {"chan", layout},
                                   {"data", test::cafDataBody(Bytes(48))}})),
            (MetadataChanges{.chunkChanges = withoutLayout}));
  const auto ofModel = changes(test::formFile("BW64", "WAVE",
                                              {{"ds64", test::longSizesBody(0, 48, 12)},
                                               {"fmt ", test::waveFormatBody({})},
                                               {"data", Bytes(48)},
                                               {"axml", Bytes(4)},
                                               {"chna", Bytes(4)},
                                               {"iXML", Bytes(4)},
                                               {"LIST", Bytes(4)}}));
  EXPECT_EQ(
      ofModel.chunkChanges,
      (Changed{{1, test::waveFormatBody({.channels = 1})}, {4, std::nullopt}, {3, std::nullopt}}));
  EXPECT_EQ(ofModel.notes,
            (std::vector<std::string>{
                "The channels' assignment (chna) does not hold for one and is gone",
                "The channels' description (axml) does not hold for one and is gone",
                "What iXML says of tracks was kept as it is, though this is one channel"}));
}

TEST_F(StoredFormatTest, RefusesWhatNoHeaderHolds) {
  EXPECT_THROW(formatOf(wave({.channels = 9000, .bits = 8}), {.encoding = kFloat64}),
               UnwritableFormat);
  EXPECT_THROW(formatOf(wave({}), {.encoding = PCMEncoding{65, false}}), UnwritableFormat);
  Bytes huge = test::waveFormatBody({});
  huge.resize(100'000);
  EXPECT_THROW(formatOf(waveOf(huge), {.encoding = kInt24}), UnwritableFormat);
}

}  // namespace
}  // namespace orvane
