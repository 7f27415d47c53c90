#include "orvane/rawpcm/raw_pcm_format.h"

#include <charconv>
#include <cmath>
#include <functional>

#include "orvane/platform/precondition.h"
#include "orvane/text/extension_text.h"

namespace orvane {
namespace {

using Encoding = RawPCMFormat::Encoding;
using Endianness = RawPCMFormat::Endianness;

constexpr std::int64_t kMaximumChannels = 64;

struct EncodingFacts {
  std::string_view rawValue;
  int bitDepth;
  std::int64_t bytesPerSample;
  std::string_view stem;  ///< what the token begins with
};

/// In the order of the enumeration.
constexpr std::array<EncodingFacts, 7> kEncodings = {{
    {"uint8", 8, 1, "u8"},
    {"int16", 16, 2, "s16"},
    {"int24Packed", 24, 3, "s24"},
    {"int24In32", 24, 4, "s24_32"},
    {"int32", 32, 4, "s32"},
    {"float32", 32, 4, "f32"},
    {"float64", 64, 8, "f64"},
}};

constexpr const EncodingFacts& factsOf(Encoding encoding) {
  return kEncodings[static_cast<std::size_t>(encoding)];
}

/// As "%g" prints it, whatever the locale.
std::string general(double value) {
  std::array<char, 32> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general, 6);
  return {text.data(), end.ptr};
}

std::string rateText(double rate) {
  const bool inKilohertz = rate >= 1000 && std::fmod(rate, 100) == 0;
  return inKilohertz ? general(rate / 1000) + " kHz" : general(rate) + " Hz";
}

}  // namespace

std::int64_t RawPCMFormat::bytesPerFrame() const {
  std::int64_t bytes = 0;
  const bool overflows = __builtin_mul_overflow(bytesPerSample(encoding), channelCount, &bytes);
  precondition(!overflows, "the bytes of one frame must fit 64 bits");
  return bytes;
}

bool RawPCMFormat::isShapeValid() const noexcept {
  return sampleRate > 0 && std::isfinite(sampleRate) && channelCount >= 1 &&
         channelCount <= kMaximumChannels && headerSkipBytes >= 0 && trailingBytesTolerance >= 0;
}

std::optional<std::int64_t> RawPCMFormat::frameCount(std::int64_t fileSize) const {
  if (!isShapeValid() || fileSize <= headerSkipBytes) return std::nullopt;
  const std::int64_t payload = fileSize - headerSkipBytes;
  const std::int64_t frame = bytesPerFrame();
  // The runs of a planar file can only be found when they divide the payload exactly.
  if (payload % frame > (isPlanar ? 0 : trailingBytesTolerance)) return std::nullopt;
  if (frame > payload) return std::nullopt;
  return payload / frame;
}

std::string RawPCMFormat::formatToken() const {
  std::string token(factsOf(encoding).stem);
  if (endiannessMatters(encoding)) token += endianness == Endianness::little ? "le" : "be";
  return token;
}

std::string RawPCMFormat::fileFormatLabel() const {
  return "RAW " + formatToken();
}

std::string RawPCMFormat::summary() const {
  constexpr std::string_view kSeparator = " \u00B7 ";
  std::string text = rateText(sampleRate);
  const auto add = [&](std::string_view part) { text.append(kSeparator).append(part); };
  add(std::to_string(channelCount) + " ch");
  add(formatToken());
  if (isPlanar) add("planar");
  if (headerSkipBytes >= 1) add("skip " + std::to_string(headerSkipBytes) + " B");
  if (trailingBytesTolerance >= 1) add("tolerate " + std::to_string(trailingBytesTolerance) + " B");
  return text;
}

const std::array<std::string_view, 13>& RawPCMFormat::allFormatTokens() noexcept {
  static constexpr std::array<std::string_view, 13> kTokens = {
      "u8",    "s16le", "s16be", "s24le", "s24be", "s24_32le", "s24_32be",
      "s32le", "s32be", "f32le", "f32be", "f64le", "f64be"};
  return kTokens;
}

std::optional<std::pair<Encoding, Endianness>> RawPCMFormat::encodingAndEndianness(
    std::string_view token) {
  const std::string lower = lowercased(token);
  std::string_view rest = lower;
  if (rest == factsOf(Encoding::uint8).stem) return std::pair{Encoding::uint8, Endianness::little};
  const bool isLittle = rest.ends_with("le");
  if (!isLittle && !rest.ends_with("be")) return std::nullopt;
  rest.remove_suffix(2);
  for (const Encoding encoding : kAllRawPCMEncodings)
    if (endiannessMatters(encoding) && factsOf(encoding).stem == rest)
      return std::pair{encoding, isLittle ? Endianness::little : Endianness::big};
  return std::nullopt;
}

std::string_view rawValue(Encoding encoding) noexcept {
  return factsOf(encoding).rawValue;
}

std::optional<Encoding> rawPCMEncodingFromRawValue(std::string_view text) noexcept {
  for (const Encoding encoding : kAllRawPCMEncodings)
    if (rawValue(encoding) == text) return encoding;
  return std::nullopt;
}

std::string_view rawValue(Endianness endianness) noexcept {
  return endianness == Endianness::little ? "little" : "big";
}

std::optional<Endianness> rawPCMEndiannessFromRawValue(std::string_view text) noexcept {
  for (const Endianness endianness : kAllRawPCMEndiannesses)
    if (rawValue(endianness) == text) return endianness;
  return std::nullopt;
}

int bitDepth(Encoding encoding) noexcept {
  return factsOf(encoding).bitDepth;
}

std::int64_t bytesPerSample(Encoding encoding) noexcept {
  return factsOf(encoding).bytesPerSample;
}

bool endiannessMatters(Encoding encoding) noexcept {
  return bytesPerSample(encoding) > 1;
}

}  // namespace orvane

std::size_t std::hash<orvane::RawPCMFormat>::operator()(
    const orvane::RawPCMFormat& format) const noexcept {
  std::size_t seed = 0;
  const auto mix = [&seed](std::size_t value) {
    seed ^= value + 0x9E3779B97F4A7C15U + (seed << 6) + (seed >> 2);
  };
  mix(std::hash<double>{}(format.sampleRate));
  mix(std::hash<std::int64_t>{}(format.channelCount));
  mix(static_cast<std::size_t>(format.encoding));
  mix(static_cast<std::size_t>(format.endianness));
  mix(static_cast<std::size_t>(format.isPlanar));
  mix(std::hash<std::int64_t>{}(format.headerSkipBytes));
  mix(std::hash<std::int64_t>{}(format.trailingBytesTolerance));
  return seed;
}
