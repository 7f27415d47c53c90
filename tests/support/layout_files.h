#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tests/support/byte_writer.h"
#include "tests/support/container_writer.h"

/// The same samples in files whose layout chunk is put in as it is given; without one where it is
/// empty.
namespace orvane::test::LayoutFiles {

inline constexpr std::uint32_t kRate = 48000;

/// Interleaved samples.
using Words = std::vector<std::int16_t>;

inline Bytes linear(const Words& words, std::endian order) {
  ByteWriter writer(order);
  for (const std::int16_t word : words) writer.u16(static_cast<std::uint16_t>(word));
  return writer.bytes();
}

/// ITU-T G.711, Table 2a: a sign, three bits of exponent and four of mantissa, all inverted.
inline Bytes muLaw(const Words& words) {
  Bytes bytes;
  for (const std::int16_t word : words) {
    constexpr int kBias = 132;
    const int magnitude = std::min(word < 0 ? -int{word} : int{word}, 32635) + kBias;
    const int exponent = static_cast<int>(std::bit_width(static_cast<unsigned>(magnitude))) - 8;
    const int mantissa = (magnitude >> (exponent + 3)) & 0xF;
    const int code = (word < 0 ? 0x80 : 0) | exponent << 4 | mantissa;
    bytes.push_back(static_cast<std::byte>(~code));
  }
  return bytes;
}

inline Bytes box(std::string_view id, const Bytes& body) {
  return ByteWriter(std::endian::big).u32(8 + body.size()).text(id).append(body).bytes();
}

inline Bytes fullBox(std::string_view id, const Bytes& body) {
  return box(id, ByteWriter().zeros(4).append(body).bytes());
}

inline ByteWriter big() {
  return ByteWriter(std::endian::big);
}

/// 16-bit PCM in QuickTime's first form of a sound description; `layout` is absent when empty.
inline Bytes mov(std::uint32_t channels, const Words& words, const Bytes& layout) {
  const Bytes type = box("ftyp", big().text("qt  ").u32(0x200).text("qt  ").bytes());
  const std::uint32_t frameBytes = 2 * channels;
  const auto frames = static_cast<std::uint32_t>(words.size() / channels);
  const Bytes data = box("mdat", linear(words, std::endian::big));
  auto description = big().zeros(6).u16(1).u16(1).zeros(6).u16(channels).u16(16).zeros(4);
  description.u32(kRate << 16).u32(1).u32(2).u32(frameBytes).u32(2);
  if (!layout.empty()) description.append(fullBox("chan", layout));
  const Bytes table =
      ByteWriter()
          .append(fullBox("stsd", big().u32(1).append(box("twos", description.bytes())).bytes()))
          .append(fullBox("stts", big().u32(1).u32(frames).u32(1).bytes()))
          .append(fullBox("stsc", big().u32(1).u32(1).u32(frames).u32(1).bytes()))
          .append(fullBox("stsz", big().u32(1).u32(frames).bytes()))
          .append(fullBox("stco", big().u32(1).u32(type.size() + 8).bytes()))
          .bytes();
  const Bytes timing = big().zeros(8).u32(kRate).u32(frames).zeros(4).bytes();
  const Bytes handler = fullBox("hdlr", big().text("mhlrsoun").zeros(13).bytes());
  const Bytes media =
      ByteWriter()
          .append(fullBox("mdhd", timing))
          .append(handler)
          .append(box(
              "minf",
              ByteWriter().append(fullBox("smhd", Bytes(4))).append(box("stbl", table)).bytes()))
          .bytes();
  const Bytes header =
      fullBox("tkhd", big().zeros(8).u32(1).zeros(4).u32(frames).zeros(60).bytes());
  const Bytes track = ByteWriter().append(header).append(box("mdia", media)).bytes();
  const Bytes movie = ByteWriter()
                          .append(fullBox("mvhd", ByteWriter().append(timing).zeros(76).bytes()))
                          .append(box("trak", track))
                          .bytes();
  return ByteWriter().append(type).append(data).append(box("moov", movie)).bytes();
}

inline Bytes cafMuLaw(std::uint32_t channels, const Words& words, const Bytes& layout) {
  const Bytes description =
      big().float64(kRate).text("ulaw").u32(0).u32(channels).u32(1).u32(channels).u32(8).bytes();
  std::vector<RawChunk> chunks{{.id = "desc", .body = description}};
  if (!layout.empty()) chunks.push_back({.id = "chan", .body = layout});
  chunks.push_back({.id = "data", .body = cafDataBody(muLaw(words))});
  return cafFile(chunks);
}

inline Bytes cafPCM(std::uint32_t channels, const Words& words, const Bytes& layout) {
  std::vector<RawChunk> chunks{
      {.id = "desc", .body = cafDescriptionBody(kRate, static_cast<int>(channels), {})}};
  if (!layout.empty()) chunks.push_back({.id = "chan", .body = layout});
  chunks.push_back({.id = "data", .body = cafDataBody(linear(words, std::endian::little))});
  return cafFile(chunks);
}

inline Bytes aiffMuLaw(std::uint32_t channels, const Words& words, const Bytes& layout) {
  std::vector<RawChunk> chunks{
      {.id = "COMM",
       .body = commonBody(static_cast<int>(channels),
                          static_cast<std::uint32_t>(words.size() / channels), 16, kRate, "ulaw")}};
  if (!layout.empty()) chunks.push_back({.id = "CHAN", .body = layout});
  chunks.push_back({.id = "SSND", .body = soundBody(muLaw(words))});
  return formFile("FORM", "AIFC", chunks);
}

}  // namespace orvane::test::LayoutFiles
