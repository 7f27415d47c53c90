// Writes small sound files of every container, from which the fuzzers set out.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "tests/support/container_writer.h"
#include "tests/support/marked_files.h"

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
  for (const Bytes& bytes : markedFiles()) seeds.add(bytes);
  writeSignatures(seeds);
  return 0;
}
