#include "orvane/container/sniff/container_sniffer.h"

#include <gtest/gtest.h>

#include "tests/support/byte_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using namespace std::string_view_literals;
using test::Bytes;
using test::ByteWriter;

class ContainerSniffer : public testing::Test {
 protected:
  SniffedContainer sniff(const Bytes& bytes) {
    const InputFile file(folder_.write("file", bytes));
    return sniffContainer(file);
  }

  /// The code of a file that begins with `text` and goes on with zeros.
  FourCC codeOf(std::string_view text) {
    return sniff(ByteWriter().text(text).zeros(200).bytes()).fileTypeID;
  }

  test::TemporaryDirectory folder_;
};

TEST_F(ContainerSniffer, KnowsThePCMContainers) {
  EXPECT_EQ(codeOf("RIFF\0\0\0\0WAVE"sv), fourCCFrom("WAVE"));
  EXPECT_EQ(codeOf("RIFX\0\0\0\0WAVE"sv), fourCCFrom("WAVE"));
  EXPECT_EQ(codeOf("RF64\xFF\xFF\xFF\xFFWAVE"), fourCCFrom("RF64"));
  EXPECT_EQ(codeOf("BW64\xFF\xFF\xFF\xFFWAVE"), fourCCFrom("BW64"));
  EXPECT_EQ(codeOf("FORM\0\0\0\0AIFF"sv), fourCCFrom("AIFF"));
  EXPECT_EQ(codeOf("FORM\0\0\0\0AIFC"sv), fourCCFrom("AIFC"));
  EXPECT_EQ(codeOf("caff\0\1\0\0"sv), fourCCFrom("caff"));
  EXPECT_EQ(codeOf(".snd"), fourCCFrom("NeXT"));
  EXPECT_EQ(codeOf("dns."), fourCCFrom("NeXT"));
  EXPECT_EQ(codeOf(std::string_view("\0ds.", 4)), fourCCFrom("NeXT"));
  EXPECT_EQ(codeOf(std::string_view(".sd\0", 4)), fourCCFrom("NeXT"));
  EXPECT_EQ(codeOf("riff\x2E\x91\xCF\x11\xA5\xD6\x28\xDB\x04\xC1\0\0\0\0\0\0\0\0\0\0"
                   "wave\xF3\xAC\xD3\x11\x8C\xD1\0\xC0\x4F\x8E\xDB\x8A"sv),
            fourCCFrom("W64f"));
}

TEST_F(ContainerSniffer, KnowsCompressedContainers) {
  EXPECT_EQ(codeOf("fLaC\0\0\0\x22"sv), fourCCFrom("flac"));
  EXPECT_EQ(codeOf("OggS\0\2"sv), fourCCFrom("Oggf"));
  EXPECT_EQ(codeOf("#!AMR\n"), fourCCFrom("amrf"));
  EXPECT_EQ(codeOf("#!AMR-WB\n"), fourCCFrom("amrf"));
  EXPECT_EQ(codeOf("wvpk"), fourCCFrom("WV  "));
  EXPECT_EQ(codeOf("TTA1"), fourCCFrom("TTA "));
  EXPECT_EQ(codeOf("MAC \x96\x0F"), fourCCFrom("APE "));
  EXPECT_EQ(codeOf("\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\0\xAA\0\x62\xCE\x6C"sv),
            fourCCFrom("ASF "));
  EXPECT_EQ(codeOf("FLV\1\5"), fourCCFrom("FLV "));
  EXPECT_EQ(codeOf("RIFF\0\0\0\0AVI "sv), fourCCFrom("AVI "));
  EXPECT_EQ(codeOf("\x7F\xFE\x80\x01"), fourCCFrom("DTS "));
}

TEST_F(ContainerSniffer, TellsWebMFromMatroska) {
  EXPECT_EQ(codeOf("\x1A\x45\xDF\xA3\x9F\x42\x82\x88matroska"), fourCCFrom("MKV "));
  EXPECT_EQ(codeOf("\x1A\x45\xDF\xA3\x9F\x42\x82\x84webm"), fourCCFrom("WebM"));
}

TEST_F(ContainerSniffer, TellsISOMediaByTheirBrands) {
  const auto code = [&](std::string_view major, std::string_view compatible = {}) {
    const ByteWriter brands = ByteWriter(std::endian::big).text(major).u32(0).text(compatible);
    return sniff(ByteWriter(std::endian::big)
                     .u32(brands.size() + 8)
                     .text("ftyp")
                     .append(brands.bytes())
                     .text("    moov")
                     .zeros(50)
                     .bytes())
        .fileTypeID;
  };
  EXPECT_EQ(code("M4A "), fourCCFrom("m4af"));
  EXPECT_EQ(code("M4A\0"sv), fourCCFrom("m4af"));
  EXPECT_EQ(code("M4P "), fourCCFrom("m4af"));
  EXPECT_EQ(code("M4B "), fourCCFrom("m4bf"));
  EXPECT_EQ(code("M4V "), fourCCFrom("mp4f"));
  EXPECT_EQ(code("isom"), fourCCFrom("mp4f"));
  EXPECT_EQ(code("mp42"), fourCCFrom("mp4f"));
  EXPECT_EQ(code("dash"), fourCCFrom("mp4f"));
  EXPECT_EQ(code("3gp4"), fourCCFrom("3gpp"));
  EXPECT_EQ(code("3gp6"), fourCCFrom("3gpp"));
  EXPECT_EQ(code("3g2a"), fourCCFrom("3gp2"));
  EXPECT_EQ(code("qt  "), fourCCFrom("MOV "));
  EXPECT_EQ(code("mp42", "isomM4A "), fourCCFrom("m4af"));
  EXPECT_EQ(code("isom", "iso2M4B "), fourCCFrom("m4bf"));
  EXPECT_EQ(code("isom", "iso23gp4"), fourCCFrom("mp4f"));
}

TEST_F(ContainerSniffer, TakesAtomsWithoutBrandsForQuickTime) {
  for (const char* atom : {"moov", "mdat", "wide", "free", "skip"})
    EXPECT_EQ(sniff(ByteWriter(std::endian::big).u32(8).text(atom).zeros(50).bytes()).fileTypeID,
              fourCCFrom("MOV "))
        << atom;
}

TEST_F(ContainerSniffer, LooksBehindTags) {
  const auto tag = [](std::size_t size, int flags) {
    return ByteWriter(std::endian::big)
        .text("ID3")
        .u8(4)
        .u8(0)
        .u8(static_cast<std::uint64_t>(flags))
        .u8(0)
        .u8(0)
        .u8(size >> 7)
        .u8(size & 127)
        .zeros(size + ((flags & 16) != 0 ? 10 : 0))
        .bytes();
  };
  const Bytes flac = ByteWriter().text("fLaC").zeros(100).bytes();
  const auto sniffed = sniff(ByteWriter().append(tag(300, 0)).append(flac).bytes());
  EXPECT_EQ(sniffed.fileTypeID, fourCCFrom("flac"));
  EXPECT_EQ(sniffed.start, 310U);
  const auto twice =
      sniff(ByteWriter().append(tag(300, 16)).append(tag(5, 0)).append(flac).bytes());
  EXPECT_EQ(twice.fileTypeID, fourCCFrom("flac"));
  EXPECT_EQ(twice.start, 320U + 15);
}

TEST_F(ContainerSniffer, KnowsTransportStreams) {
  ByteWriter packets;
  for (int i = 0; i < 6; ++i) packets.u8(0x47).zeros(187);
  EXPECT_EQ(sniff(packets.bytes()).fileTypeID, fourCCFrom("MPTS"));
}

TEST_F(ContainerSniffer, ClaimsNothingForOtherBytes) {
  for (std::uint64_t seed = 1; seed <= 50; ++seed) {
    ByteWriter noise;
    std::uint64_t state = seed;
    for (int i = 0; i < 5000; ++i)
      noise.u64(state = state * 6364136223846793005U + 1442695040888963407U);
    EXPECT_EQ(sniff(noise.bytes()).kind, SniffedContainer::Kind::unknown) << seed;
  }
  EXPECT_EQ(sniff(Bytes(100)).kind, SniffedContainer::Kind::unknown);
  EXPECT_EQ(sniff(Bytes(1)).kind, SniffedContainer::Kind::unknown);
  EXPECT_EQ(codeOf("RIFF\0\0\0\0PAL "sv), 0U);
}

TEST_F(ContainerSniffer, SurvivesEveryCutOfEverySignature) {
  for (const auto text :
       {"RIFF\0\0\0\0WAVE"sv, "\x1A\x45\xDF\xA3\x9F\x42\x82\x88matroska"sv,
        "\0\0\0\x18"
        "ftypM4A \0\0\0\0isom"sv,
        "ID3\4\0\0\0\0\0\x7F"sv, "\xFF\xFB\x90\x64\xFF\xF1\x50\x80"sv, "\x0B\x77\0\0\x14\x40"sv})
    for (std::size_t size = 1; size <= text.size(); ++size)
      EXPECT_NO_THROW(sniff(ByteWriter().text(text.substr(0, size)).bytes()));
}

}  // namespace
}  // namespace orvane
