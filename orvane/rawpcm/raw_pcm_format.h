#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "orvane/platform/export.h"

namespace orvane {

/// How the bytes of a headerless PCM file are to be read. Has a JSON form; all seven keys are
/// required.
struct ORVANE_API RawPCMFormat {
  enum class Encoding { uint8, int16, int24Packed, int24In32, int32, float32, float64 };
  enum class Endianness { little, big };

  double sampleRate = 0;  ///< frames per second, Hz
  std::int64_t channelCount = 0;
  Encoding encoding = Encoding::int16;
  Endianness endianness = Endianness::little;
  bool isPlanar = false;             ///< each channel's whole run stored one after another
  std::int64_t headerSkipBytes = 0;  ///< bytes at the start that are not audio
  /// Bytes beyond the last whole frame that are accepted and ignored; interleaved files only.
  std::int64_t trailingBytesTolerance = 0;

  bool operator==(const RawPCMFormat&) const = default;

  /// Bytes per sample × channels; overflow is a programming error.
  std::int64_t bytesPerFrame() const;
  /// Rate finite and above 0, 1 … 64 channels, skip and tolerance not negative.
  bool isShapeValid() const noexcept;
  /// Whole frames in a file of that size; absent when the declaration does not fit it.
  std::optional<std::int64_t> frameCount(std::int64_t fileSize) const;
  /// "s16le", "s24_32be", "u8" …
  std::string formatToken() const;
  /// "RAW " and the token.
  std::string fileFormatLabel() const;
  /// One line for people: "48 kHz · 2 ch · s24le · skip 44 B".
  std::string summary() const;

  /// All 13 tokens in their fixed order.
  static const std::array<std::string_view, 13>& allFormatTokens() noexcept;
  /// In any case of letters; absent for what is no token.
  static std::optional<std::pair<Encoding, Endianness>> encodingAndEndianness(
      std::string_view token);
};

inline constexpr std::array kAllRawPCMEncodings = {
    RawPCMFormat::Encoding::uint8,       RawPCMFormat::Encoding::int16,
    RawPCMFormat::Encoding::int24Packed, RawPCMFormat::Encoding::int24In32,
    RawPCMFormat::Encoding::int32,       RawPCMFormat::Encoding::float32,
    RawPCMFormat::Encoding::float64};
inline constexpr std::array kAllRawPCMEndiannesses = {RawPCMFormat::Endianness::little,
                                                      RawPCMFormat::Endianness::big};

/// Names under which encodings are stored: "uint8", "int16", "int24Packed" …
ORVANE_API std::string_view rawValue(RawPCMFormat::Encoding encoding) noexcept;
ORVANE_API std::optional<RawPCMFormat::Encoding> rawPCMEncodingFromRawValue(
    std::string_view text) noexcept;
ORVANE_API std::string_view rawValue(RawPCMFormat::Endianness endianness) noexcept;
ORVANE_API std::optional<RawPCMFormat::Endianness> rawPCMEndiannessFromRawValue(
    std::string_view text) noexcept;
ORVANE_API int bitDepth(RawPCMFormat::Encoding encoding) noexcept;
ORVANE_API std::int64_t bytesPerSample(RawPCMFormat::Encoding encoding) noexcept;
/// False for one-byte samples only.
ORVANE_API bool endiannessMatters(RawPCMFormat::Encoding encoding) noexcept;

}  // namespace orvane

template <>
struct std::hash<orvane::RawPCMFormat> {
  ORVANE_API std::size_t operator()(const orvane::RawPCMFormat& format) const noexcept;
};
