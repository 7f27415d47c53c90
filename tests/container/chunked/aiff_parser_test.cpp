#include "orvane/container/chunked/aiff_file.h"

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::commonBody;
using test::formFile;
using test::soundBody;
using enum ChannelLabel;
using Labels = std::vector<ChannelLabel>;

class AiffParser : public testing::Test {
 protected:
  PCMStream parse(const Bytes& bytes) {
    const InputFile file(folder_.write("a.aiff", bytes));
    return parseAIFF(file, 0);
  }

  PCMStream parseType(std::string_view compression, int bits = 16) {
    return parse(formFile("FORM", "AIFC",
                          {{.id = "COMM", .body = commonBody(2, 4, bits, 48000, compression)},
                           {.id = "SSND", .body = soundBody(Bytes(64))}}));
  }

  PCMStream parseFrames(std::uint32_t frames, std::size_t dataBytes) {
    return parse(formFile("FORM", "AIFF",
                          {{.id = "COMM", .body = commonBody(2, frames, 16, 48000)},
                           {.id = "SSND", .body = soundBody(Bytes(dataBytes))}}));
  }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(AiffParser, ReadsEightyBitRatesWhateverTheirFraction) {
  for (const double rate :
       {8000.0, 11025.0, 44100.0, 48000.0, 384000.0, 44099.5, 48000.0 / 1.001}) {
    const PCMStream stream =
        parse(formFile("FORM", "AIFF", {{.id = "COMM", .body = commonBody(1, 0, 16, rate)}}));
    EXPECT_EQ(stream.description.dataFormat.sampleRate, rate);
  }
}

TEST_F(AiffParser, SkipsTheSoundOffset) {
  const PCMStream stream = parse(formFile("FORM", "AIFF",
                                          {{.id = "COMM", .body = commonBody(2, 3, 16, 48000)},
                                           {.id = "SSND", .body = soundBody(Bytes(12), 6)}}));
  EXPECT_EQ(stream.frameCount, 3);
  EXPECT_EQ(stream.dataOffset, 12U + 8 + 18 + 8 + 8 + 6);
}

TEST_F(AiffParser, ClampsTheFrameCountToWhatIsThere) {
  EXPECT_EQ(parseFrames(3, 40).frameCount, 3);
  EXPECT_TRUE(parseFrames(3, 40).description.warnings.empty());
  EXPECT_EQ(parseFrames(0, 40).frameCount, 10);  // not known when the header was written
  const PCMStream shortened = parseFrames(100, 40);
  EXPECT_EQ(shortened.frameCount, 10);
  ASSERT_EQ(shortened.description.warnings.size(), 1U);
  EXPECT_EQ(shortened.description.warnings[0].code, AudioFileWarning::Code::truncatedAudio);
}

TEST_F(AiffParser, TellsEveryPCMTypeOfAIFFC) {
  const auto expectSample = [&](std::string_view type, SampleEncoding sample) {
    const PCMStream stream = parseType(type);
    EXPECT_EQ(stream.description.fileTypeID, fourCCFrom("AIFC"));
    EXPECT_EQ(stream.description.dataFormat.formatID, kFormatLinearPCM) << type;
    EXPECT_EQ(stream.sample, sample) << type;
    EXPECT_EQ(stream.description.dataFormat.bitsPerChannel, sample.bits) << type;
  };
  expectSample("NONE", SampleEncoding::signedInteger(2, true));
  expectSample("twos", SampleEncoding::signedInteger(2, true));
  expectSample("sowt", SampleEncoding::signedInteger(2));
  expectSample("raw ", SampleEncoding::unsignedInteger(1));
  expectSample("in24", SampleEncoding::signedInteger(3, true));
  expectSample("in32", SampleEncoding::signedInteger(4, true));
  expectSample("42ni", SampleEncoding::signedInteger(3));
  expectSample("42n1", SampleEncoding::signedInteger(3));
  expectSample("23ni", SampleEncoding::signedInteger(4));
  expectSample("fl32", SampleEncoding::floatingPoint(4, true));
  expectSample("FL32", SampleEncoding::floatingPoint(4, true));
  expectSample("fl64", SampleEncoding::floatingPoint(8, true));
  expectSample("FL64", SampleEncoding::floatingPoint(8, true));
}

TEST_F(AiffParser, NamesTheCodecOfCompressedFiles) {
  const auto code = [&](std::string_view type) {
    return parseType(type).description.dataFormat.formatID;
  };
  EXPECT_EQ(code("ulaw"), fourCCFrom("ulaw"));
  EXPECT_EQ(code("ULAW"), fourCCFrom("ulaw"));
  EXPECT_EQ(code("ALAW"), fourCCFrom("alaw"));
  EXPECT_EQ(code("ima4"), fourCCFrom("ima4"));
  EXPECT_EQ(code("MAC3"), fourCCFrom("MAC3"));
  EXPECT_EQ(code("GSM "), fourCCFrom("agsm"));
  EXPECT_EQ(code("Qclp"), fourCCFrom("Qclp"));
}

TEST_F(AiffParser, TakesEightBitsForSigned) {
  EXPECT_EQ(parseType("NONE", 8).sample.kind, SampleEncoding::Kind::signedInteger);
  EXPECT_EQ(parseType("sowt", 8).sample.kind, SampleEncoding::Kind::signedInteger);
}

TEST_F(AiffParser, PutsOddDepthsIntoWholeBytes) {
  EXPECT_EQ(parseType("NONE", 1).sample.bytes, 1U);
  EXPECT_EQ(parseType("NONE", 12).sample.bytes, 2U);
  EXPECT_EQ(parseType("NONE", 20).sample.bytes, 3U);
  EXPECT_EQ(parseType("NONE", 20).description.dataFormat.bitsPerChannel, 20U);
}

TEST_F(AiffParser, TakesTheLayoutFromItsChunkEvenBeforeTheFormat) {
  const PCMStream stream = parse(formFile("FORM", "AIFF",
                                          {{.id = "CHAN", .body = test::layoutBody(0x007A0006)},
                                           {.id = "COMM", .body = commonBody(6, 1, 16, 48000)},
                                           {.id = "SSND", .body = soundBody(Bytes(12))}}));
  ASSERT_TRUE(stream.description.layout);
  EXPECT_EQ(stream.description.layout->labels,
            (Labels{left, right, leftSurround, rightSurround, center, lfe}));
}

TEST_F(AiffParser, TakesCommonLayoutsWhereAFileHasNone) {
  const auto labels = [&](int channels) -> std::optional<Labels> {
    const auto layout =
        parse(
            formFile("FORM", "AIFF", {{.id = "COMM", .body = commonBody(channels, 0, 16, 48000)}}))
            .description.layout;
    return layout ? std::optional(layout->labels) : std::nullopt;
  };
  EXPECT_EQ(labels(2), (Labels{left, right}));
  EXPECT_EQ(labels(3), (Labels{left, right, center}));
  EXPECT_EQ(labels(4), (Labels{left, right, leftSurround, rightSurround}));
  EXPECT_EQ(labels(5), std::nullopt);
  EXPECT_EQ(labels(6), (Labels{left, right, center, lfe, leftSurround, rightSurround}));
  EXPECT_EQ(labels(8), std::nullopt);
}

}  // namespace
}  // namespace orvane
