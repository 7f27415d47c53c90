// Writes small sound files of every container, from which the fuzzers set out.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/container_writer.h"

namespace {

using namespace orvane::test;
using namespace std::string_view_literals;

class SeedFolder {
 public:
  explicit SeedFolder(const std::filesystem::path& path) : path_(path) {
    std::filesystem::create_directories(path_);
  }

  void add(const Bytes& bytes) const {
    std::ofstream stream(path_ / ("seed" + std::to_string(count_++)), std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
  }

 private:
  std::filesystem::path path_;
  mutable int count_ = 0;
};

void writeWaves(const SeedFolder& seeds) {
  const Bytes samples(48);
  for (const int bits : {8, 16, 20, 24, 32, 48, 64}) {
    const WaveFormat described{.bits = static_cast<std::uint16_t>(bits), .mask = 3};
    const RawChunk format{.id = "fmt ", .body = waveFormatBody(described)};
    const RawChunk data{.id = "data", .body = samples};
    seeds.add(formFile("RIFF", "WAVE", {format, {.id = "LIST", .body = Bytes(5)}, data}));
    seeds.add(formFile("RF64", "WAVE",
                       {{.id = "ds64", .body = longSizesBody(100, samples.size(), 4)},
                        format,
                        {.id = "data", .body = samples, .statedSize = 0xFFFFFFFF}}));
    seeds.add(wave64File({format, {.id = "junk", .body = Bytes(3)}, data}));
  }
  seeds.add(
      formFile("RIFX", "WAVE",
               {{.id = "fmt ", .body = waveFormatBody({.tag = 3, .bits = 32}, std::endian::big)},
                {.id = "data", .body = samples}}));
}

void writeOthers(const SeedFolder& seeds) {
  const Bytes samples(48);
  const RawChunk sound{.id = "SSND", .body = soundBody(samples, 4)};
  for (const char* type : {"NONE", "sowt", "fl32", "fl64", "in24", "raw ", "ulaw"})
    seeds.add(formFile("FORM", "AIFC",
                       {{.id = "COMM", .body = commonBody(2, 4, 16, 48000, type)},
                        {.id = "CHAN", .body = layoutBody(0, 0, {1, 2})},
                        sound}));
  seeds.add(formFile("FORM", "AIFF", {{.id = "COMM", .body = commonBody(1, 4, 12, 48000)}, sound}));
  for (const std::uint32_t tag : {0x00650002U, 0x00010000U, 0U})
    seeds.add(
        cafFile({{.id = "desc", .body = cafDescriptionBody(48000, 2, {.bits = 24, .bytes = 3})},
                 {.id = "chan", .body = layoutBody(tag, 3, {1, 2})},
                 {.id = "data", .body = cafDataBody(samples), .statedSize = UINT64_MAX}}));
  for (std::uint32_t encoding = 1; encoding <= 7; ++encoding)
    seeds.add(auFile(encoding, 48000, 2, samples));
}

/// MATLAB's variables, and headers of samplers, handhelds and laboratories.
void writeOldFormats(const SeedFolder& seeds) {
  for (const auto order : {std::endian::little, std::endian::big}) {
    const std::uint64_t digits = order == std::endian::big ? 1000 : 0;
    for (const unsigned type : {0U, 10U, 20U, 30U, 50U})
      seeds.add(ByteWriter(order)
                    .u32(digits)
                    .u32(1)
                    .u32(1)
                    .u32(0)
                    .u32(11)
                    .text("samplerate\0"sv)
                    .float64(48000)
                    .u32(digits + type)
                    .u32(2)
                    .u32(3)
                    .u32(0)
                    .u32(2)
                    .text("x\0"sv)
                    .zeros(48)
                    .bytes());
    for (const unsigned type : {1U, 2U, 3U, 5U, 7U, 9U})
      seeds.add(ByteWriter(order)
                    .text("MATLAB 5.0 MAT-file")
                    .zeros(105)
                    .u16(256)
                    .u16(0x4D49)
                    .u32(14)
                    .u32(64)
                    .u32(6)
                    .u32(8)
                    .u64(0)
                    .u32(5)
                    .u32(8)
                    .u32(1)
                    .u32(1)
                    .u32(1)
                    .u32(10)
                    .text("samplerate")
                    .zeros(6)
                    .u32(2 << 16 | 4)
                    .u16(48000)
                    .u16(0)
                    .u32(14)
                    .u32(96)
                    .u32(6)
                    .u32(8)
                    .u64(0)
                    .u32(5)
                    .u32(8)
                    .u32(2)
                    .u32(3)
                    .u32(1 << 16 | 1)
                    .text("x")
                    .zeros(3)
                    .u32(type)
                    .u32(48)
                    .zeros(48)
                    .bytes());
  }
  for (const unsigned format : {0U, 1U, 2U})
    seeds.add(ByteWriter(std::endian::big)
                  .text(" paf")
                  .u32(0)
                  .u32(format & 1)
                  .u32(48000)
                  .u32(format)
                  .u32(2)
                  .zeros(2048 - 24 + 48)
                  .bytes());
  seeds.add(ByteWriter()
                .text("SOUND SAMPLE DATA 2.1 ")
                .zeros(90)
                .u32(9)
                .zeros(18 + 203)
                .u32(44100)
                .zeros(8)
                .bytes());
  seeds.add(
      ByteWriter().text("SOUND\x1A").u16(0).u32(48).u32(0).u32(48).u16(8000).zeros(150).bytes());
  seeds.add(ByteWriter()
                .u8(1)
                .u8(4)
                .zeros(17)
                .u8(100)
                .u8(0)
                .u8(0)
                .u32(0)
                .u32(9)
                .u32(9)
                .u32(9)
                .u8(0)
                .u8(1)
                .u16(44100)
                .zeros(18)
                .bytes());
  seeds.add(ByteWriter(std::endian::big).u32(9).u32(625).u16(2).u16(0).zeros(18).bytes());
  seeds.add(ByteWriter().text("LM8953").zeros(16).u8(0xC9).u8(2).zeros(20).bytes());
  seeds.add(ByteWriter().text("Extended Instrument: ").zeros(275).u16(1).zeros(60).bytes());
  seeds.add(ByteWriter()
                .u32(0x10000037)
                .u32(0x1000006D)
                .u32(0x1000007E)
                .u32(0)
                .u32(20)
                .u8(2)
                .u32(0x10000052)
                .u32(29)
                .u32(9)
                .u32(0)
                .zeros(20)
                .bytes());
  seeds.add(ByteWriter().zeros(6).text("\1\0\0\0"sv).zeros(6).text("ring.bin").zeros(30).bytes());
  seeds.add(ByteWriter()
                .text("$H")
                .zeros(10)
                .text("\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\0\xAA\0\x62\xCE\x6C"sv)
                .u64(200)
                .u32(1)
                .u16(0x0201)
                .u64(0x11CFA9B7B7DC0791)
                .u64(0)
                .u64(100)
                .u64(0x11CF5B4DF8699E40)
                .zeros(46)
                .u16(0x0161)
                .u16(2)
                .u32(44100)
                .zeros(50)
                .bytes());
  seeds.add(ByteWriter().text("; Sample Rate 8000\n; Channels 1\n0 0\n").bytes());
}

void writeSignatures(const SeedFolder& seeds) {
  for (const std::string_view text :
       {"fLaC"sv, "OggS\0\2"sv, "#!AMR\n"sv, "\x1A\x45\xDF\xA3\x9F\x42\x82\x84webm"sv,
        "\0\0\0\x18"
        "ftypmp42\0\0\0\0isomM4A "sv,
        "\0\0\0\x08"
        "moov"sv,
        "wvpk"sv, "#EXTM3U\n"sv, "<?xml version=\"1.0\"?><MPD></MPD>"sv, "plain text\n"sv})
    seeds.add(ByteWriter().text(text).zeros(64).bytes());
  const auto frames = [&](std::string_view header, std::size_t length) {
    ByteWriter writer;
    for (int i = 0; i < 4; ++i) writer.text(header).zeros(length - header.size());
    seeds.add(writer.bytes());
  };
  frames("\xFF\xFB\x90\x64"sv, 417);
  frames("\xFF\xFD\x84\x04"sv, 384);
  frames("\xFF\xF1\x50\x80\x0C\x9F\xFC"sv, 100);
  frames("\x56\xE0\x64"sv, 103);
  frames("\x0B\x77\0\0\x14\x40"sv, 768);
  frames("\x7F\xFE\x80\x01\xFC\x3C\x75\xB0"sv, 1884);
  frames("\x9C\xF1\x11"sv, 42);
  seeds.add(ByteWriter().text("ID3").u8(4).zeros(5).u8(9).zeros(9).text("fLaC").bytes());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::fputs("usage: make_container_seeds FOLDER\n", stderr);
    return 2;
  }
  const SeedFolder seeds(arguments[1]);
  writeWaves(seeds);
  writeOthers(seeds);
  writeOldFormats(seeds);
  writeSignatures(seeds);
  return 0;
}
