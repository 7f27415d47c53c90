#include "orvane/rawpcm/raw_pcm_format_json.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace orvane {
namespace {

using nlohmann::json;

[[noreturn]] void refuse(const char* key, const char* expected, const json& context) {
  // 302 is the library's own number for a value of the wrong type.
  throw json::type_error::create(302, std::string(key) + " must be " + expected, &context);
}

std::int64_t wholeNumber(const json& record, const char* key) {
  const json& value = record.at(key);
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (number <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
      return static_cast<std::int64_t>(number);
  } else if (value.is_number_integer()) {
    return value.get<std::int64_t>();
  } else if (value.is_number_float()) {
    const double number = value.get<double>();
    if (std::trunc(number) == number && std::fabs(number) < 0x1p63)
      return static_cast<std::int64_t>(number);
  }
  refuse(key, "a whole number of 64 bits", record);
}

double rate(const json& record) {
  constexpr const char* kKey = "sampleRate";
  const json& value = record.at(kKey);
  if (value.is_null()) return -std::numeric_limits<double>::infinity();
  if (!value.is_number()) refuse(kKey, "a number", record);
  return value.get<double>();
}

bool flag(const json& record, const char* key) {
  const json& value = record.at(key);
  if (!value.is_boolean()) refuse(key, "true or false", record);
  return value.get<bool>();
}

std::string text(const json& record, const char* key) {
  const json& value = record.at(key);
  if (!value.is_string()) refuse(key, "a text", record);
  return value.get<std::string>();
}

}  // namespace

void to_json(json& record, const RawPCMFormat& format) {
  record = json{{"sampleRate", format.sampleRate},
                {"channelCount", format.channelCount},
                {"encoding", rawValue(format.encoding)},
                {"endianness", rawValue(format.endianness)},
                {"isPlanar", format.isPlanar},
                {"headerSkipBytes", format.headerSkipBytes},
                {"trailingBytesTolerance", format.trailingBytesTolerance}};
}

void from_json(const json& record, RawPCMFormat& format) {
  const auto encoding = rawPCMEncodingFromRawValue(text(record, "encoding"));
  if (!encoding) refuse("encoding", "the name of a sample encoding", record);
  const auto endianness = rawPCMEndiannessFromRawValue(text(record, "endianness"));
  if (!endianness) refuse("endianness", "little or big", record);
  format = {.sampleRate = rate(record),
            .channelCount = wholeNumber(record, "channelCount"),
            .encoding = *encoding,
            .endianness = *endianness,
            .isPlanar = flag(record, "isPlanar"),
            .headerSkipBytes = wholeNumber(record, "headerSkipBytes"),
            .trailingBytesTolerance = wholeNumber(record, "trailingBytesTolerance")};
}

}  // namespace orvane
