#pragma once

#include "orvane/rawpcm/raw_pcm_format.h"
#include "orvane/text/json/json_coding.h"

// JSON form of a declared raw format.
namespace orvane::json {

template <>
struct Coding<RawPCMFormat::Encoding> {
  static std::string_view text(RawPCMFormat::Encoding encoding) { return rawValue(encoding); }
  static std::optional<RawPCMFormat::Encoding> value(std::string_view text) {
    return rawPCMEncodingFromRawValue(text);
  }
};

template <>
struct Coding<RawPCMFormat::Endianness> {
  static std::string_view text(RawPCMFormat::Endianness endianness) { return rawValue(endianness); }
  static std::optional<RawPCMFormat::Endianness> value(std::string_view text) {
    return rawPCMEndiannessFromRawValue(text);
  }
};

template <>
struct Coding<RawPCMFormat> {
  using Record = RawPCMFormat;
  static constexpr std::tuple fields{
      Field{"sampleRate", &Record::sampleRate},
      Field{"channelCount", &Record::channelCount},
      Field{"encoding", &Record::encoding},
      Field{"endianness", &Record::endianness},
      Field{"isPlanar", &Record::isPlanar},
      Field{"headerSkipBytes", &Record::headerSkipBytes},
      Field{"trailingBytesTolerance", &Record::trailingBytesTolerance}};
};

}  // namespace orvane::json
