#pragma once

#include <bit>
#include <cstdint>
#include <map>
#include <string>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/input_file.h"

/// What chunked containers say about their markers, by the markers' identifiers.
namespace orvane::MarkerTexts {

/// All texts of a chunk together; a list of ten thousand marks is far smaller.
inline constexpr std::uint64_t kMaximumBytes = 16U << 20U;

/// What an associated data list says about one cue point.
struct CueText {
  std::string label{};
  std::string note{};
  std::string region{};
  std::uint32_t regionFrames = 0;

  /// What it is called; empty for no name.
  const std::string& name() const noexcept {
    return !label.empty() ? label : !note.empty() ? note : region;
  }
};

/// `LIST` chunks of type `adtl`.
std::map<std::uint32_t, CueText> ofCuePoints(const InputFile& file, const PCMStream& stream);

/// `strg`.
std::map<std::uint32_t, std::string> ofStrings(const InputFile& file, const PCMStream& stream);

/// Text of a fixed length, ended early by a NUL, as UTF-8.
std::string textOf(std::string bytes);

/// The chunk's body; empty when there is no such chunk.
HeaderFields bodyOf(const InputFile& file, const Chunk* chunk, std::uint64_t mostBytes,
                    std::endian order);

}  // namespace orvane::MarkerTexts
