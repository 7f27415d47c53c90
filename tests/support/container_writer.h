#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/byte_writer.h"

/// Writers of PCM containers for tests, written apart from the product's: files of every depth, and
/// files that are wrong in a chosen place.
namespace orvane::test {

/// How samples are stored; integers are left-justified in `bytes` bytes.
struct SampleSpec {
  int bits = 16;
  int bytes = 2;
  bool isFloat = false;
  bool isUnsigned = false;
  std::endian order = std::endian::little;
};

/// A full-scale pattern that touches both extremes and every bit: `frames` × `channels` values of
/// −1 ≤ x < 1 that `spec` holds exactly, interleaved.
std::vector<double> testValues(const SampleSpec& spec, std::size_t frames, std::size_t channels);

/// The values as they are stored.
Bytes storedSamples(const SampleSpec& spec, const std::vector<double>& values);

/// One chunk of a file; `statedSize` replaces its true size in the header.
struct RawChunk {
  std::string id{};
  Bytes body{};
  std::optional<std::uint64_t> statedSize{};
  bool hasPad = true;
};

/// `RIFF`, `RIFX`, `RF64`, `BW64` with type `WAVE`, or `FORM` with type `AIFF` or `AIFC`. The byte
/// order is little-endian for the first, third and fourth.
Bytes formFile(std::string_view form, std::string_view type, const std::vector<RawChunk>& chunks);
Bytes wave64File(const std::vector<RawChunk>& chunks);
Bytes cafFile(const std::vector<RawChunk>& chunks);

struct WaveFormat {
  std::uint16_t tag = 1;
  std::uint16_t channels = 2;
  std::uint32_t sampleRate = 48000;
  std::uint16_t bits = 16;
  std::optional<std::uint16_t> blockAlign{};
  /// Given, the format is an extensible one whose sub-format is `tag`.
  std::optional<std::uint32_t> mask{};
  std::uint16_t validBits = 0;
  bool isAmbisonic = false;
};

/// Body of a `fmt ` chunk.
Bytes waveFormatBody(const WaveFormat& format, std::endian order = std::endian::little);
/// Body of a `ds64` chunk.
Bytes longSizesBody(std::uint64_t riffSize, std::uint64_t dataSize, std::uint64_t frames);
/// Body of a `COMM` chunk; with `compression` that of AIFF-C.
Bytes commonBody(int channels, std::uint32_t frames, int bits, double sampleRate,
                 std::string_view compression = {});
/// Body of an `SSND` chunk.
Bytes soundBody(const Bytes& samples, std::uint32_t offset = 0);
/// Body of a `desc` chunk of linear PCM.
Bytes cafDescriptionBody(double sampleRate, int channels, const SampleSpec& spec);
/// Body of CAF's `data` chunk.
Bytes cafDataBody(const Bytes& samples);
/// Body of a layout chunk.
Bytes layoutBody(std::uint32_t tag, std::uint32_t bitmap = 0,
                 const std::vector<std::uint32_t>& labels = {});
Bytes auFile(std::uint32_t encoding, std::uint32_t sampleRate, std::uint32_t channels,
             const Bytes& samples, std::endian order = std::endian::big,
             std::optional<std::uint32_t> statedSize = {});

/// A sound WAVE file.
Bytes waveFile(const WaveFormat& format, const Bytes& samples);

}  // namespace orvane::test
