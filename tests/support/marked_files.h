#pragma once

#include <bit>
#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

#include "tests/support/container_writer.h"

/// Small files of every container whose chunks speak of places in the audio and of its samples.
namespace orvane::test {

/// Frames of these files: mono of eight bits, so a frame is a byte.
inline constexpr std::int64_t kMarkedFrames = 100;

inline Bytes markedWave(std::vector<RawChunk> chunks, std::string_view form = "RIFF") {
  const std::endian order = form == "RIFX" ? std::endian::big : std::endian::little;
  chunks.insert(chunks.begin(),
                {{"fmt ", waveFormatBody({.channels = 1, .sampleRate = 1000, .bits = 8}, order)},
                 {"data", Bytes(kMarkedFrames)}});
  if (form == "RF64" || form == "BW64")
    chunks.insert(chunks.begin(), {"ds64", longSizesBody(0, kMarkedFrames, kMarkedFrames)});
  return formFile(form, "WAVE", chunks);
}
inline Bytes markedWave64(std::vector<RawChunk> chunks) {
  chunks.insert(chunks.begin(),
                {{"fmt ", waveFormatBody({.channels = 1, .sampleRate = 1000, .bits = 8})},
                 {"data", Bytes(kMarkedFrames)}});
  return wave64File(chunks);
}
inline Bytes markedAIFF(std::vector<RawChunk> chunks) {
  chunks.insert(chunks.begin(), {{"COMM", commonBody(1, kMarkedFrames, 8, 1000)},
                                 {"SSND", soundBody(Bytes(kMarkedFrames))}});
  return formFile("FORM", "AIFF", chunks);
}
inline Bytes markedCAF(std::vector<RawChunk> chunks) {
  chunks.insert(chunks.begin(), {{"desc", cafDescriptionBody(1000, 1, {.bits = 8, .bytes = 1})},
                                 {"data", cafDataBody(Bytes(kMarkedFrames))}});
  return cafFile(chunks);
}

inline Bytes numbersOf(std::endian order, std::initializer_list<std::uint32_t> values) {
  ByteWriter writer(order);
  for (const std::uint32_t value : values) writer.u32(value);
  return writer.bytes();
}

/// Every chunk of WAVE that speaks of places or of samples.
inline std::vector<RawChunk> waveMarkerChunks(std::endian order) {
  ByteWriter cue(order);
  cue.u32(3);
  for (const std::uint32_t frame : {5U, 50U, 100U})
    cue.u32(frame).u32(frame).text("data").u64(0).u32(frame);
  ByteWriter list(order);
  list.text("adtllabl").u32(6).u32(5).text("A").u8(0).text("note").u32(5).u32(50).text("B").u8(0);
  list.text("ltxt").u32(20).u32(50).u32(30).text("rgn ").u64(0);
  ByteWriter broadcast(order);
  broadcast.zeros(346).u16(2).zeros(254);
  ByteWriter cart(order);
  cart.zeros(684).text("EOD ").u32(100).zeros(1356);
  return {{"cue ", cue.bytes()},
          {"LIST", list.bytes()},
          {"plst", numbersOf(order, {1, 50, 30, 1})},
          {"smpl", numbersOf(order, {1, 2, 3, 4, 5, 6, 7, 1, 0, 9, 0, 20, 60, 0, 0})},
          {"cart", cart.bytes()},
          {"bext", broadcast.bytes()},
          {"PEAK", Bytes(16)},
          {"levl", Bytes(130)},
          {"MD5 ", Bytes(16)},
          {"iXML", Bytes(9)}};
}

inline std::vector<RawChunk> aiffMarkerChunks() {
  ByteWriter mark(std::endian::big);
  mark.u16(2).u16(1).u32(5).u8(1).text("A").u16(2).u32(50).u8(2).text("BB").u8(0);
  ByteWriter comments(std::endian::big);
  comments.u16(1).u32(9).u16(1).u16(3).text("abc").u8(0);
  ByteWriter instrument(std::endian::big);
  instrument.u64(0).u16(1).u16(1).u16(2).u16(0).u16(0).u16(0);
  return {{"MARK", mark.bytes()},
          {"COMT", comments.bytes()},
          {"INST", instrument.bytes()},
          {"PEAK", Bytes(16)}};
}

inline std::vector<RawChunk> cafMarkerChunks() {
  ByteWriter mark(std::endian::big);
  mark.u32(0).u32(1).text("pbeg").float64(5).u32(1).u64(0).u32(0);
  ByteWriter regions(std::endian::big);
  regions.u32(0).u32(1).u32(1).u32(0).u32(2);
  regions.text("rbeg").float64(50).u32(1).u64(0).u32(0);
  regions.text("rend").float64(70).u32(1).u64(0).u32(0);
  ByteWriter strings(std::endian::big);
  strings.u32(1).u32(1).u64(0).text("A").u8(0);
  return {{"mark", mark.bytes()},
          {"regn", regions.bytes()},
          {"strg", strings.bytes()},
          {"peak", Bytes(20)},
          {"ovvw", Bytes(12)}};
}

/// One of every container.
inline std::vector<Bytes> markedFiles() {
  const auto little = waveMarkerChunks(std::endian::little);
  return {markedWave(little),          markedWave(waveMarkerChunks(std::endian::big), "RIFX"),
          markedWave(little, "RF64"),  markedWave(little, "BW64"),
          markedWave64(little),        markedAIFF(aiffMarkerChunks()),
          markedCAF(cafMarkerChunks())};
}

}  // namespace orvane::test
