#pragma once

#include <array>
#include <cmath>
#include <concepts>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "orvane/text/iso8601_date.h"
#include "orvane/text/json/json_reader.h"
#include "orvane/text/json/json_text.h"
#include "orvane/text/json/json_writer.h"

/// How records become JSON and come back. A record says once which fields it has,
///
///   template <>
///   struct Coding<LoudnessSample> {
///     static constexpr std::tuple fields{Field{"time", &LoudnessSample::time},
///                                        Field{"lufs", &LoudnessSample::lufs}};
///   };
///
/// and an enumeration which texts stand for its values:
///
///   template <>
///   struct Coding<Stem> {
///     static std::string_view text(Stem stem);
///     static std::optional<Stem> value(std::string_view text);
///   };
namespace orvane::json {

template <typename Record, typename Value>
struct Field {
  std::string_view key;
  Value Record::*member;
};
template <typename Record, typename Value>
Field(std::string_view, Value Record::*) -> Field<Record, Value>;

template <typename Value>
struct Coding;

template <typename Value>
concept CodedRecord = requires {
  Coding<Value>::fields;
};

template <typename Value>
concept CodedText = requires(Value value) {
  { Coding<Value>::text(value) } -> std::convertible_to<std::string_view>;
};

template <typename Value>
inline constexpr bool kIsOptional = false;
template <typename Value>
inline constexpr bool kIsOptional<std::optional<Value>> = true;

template <typename Value>
inline constexpr bool kIsArray = false;
template <typename Value>
inline constexpr bool kIsArray<std::vector<Value>> = true;

template <typename Value>
void writeValue(Writer& writer, const Value& value);

/// Absent fields, and optional numbers that are not finite, are not written.
template <typename Value>
bool isWritten(const Value& value) {
  if constexpr (kIsOptional<Value>) {
    if (!value) return false;
    if constexpr (std::floating_point<typename Value::value_type>) return std::isfinite(*value);
  }
  return true;
}

template <typename Record, typename Value>
void writeField(Writer& writer, const Record& record, const Field<Record, Value>& field) {
  const Value& value = record.*field.member;
  if (!isWritten(value)) return;
  writer.key(field.key);
  if constexpr (kIsOptional<Value>) {
    writeValue(writer, *value);
  } else {
    writeValue(writer, value);
  }
}

template <typename Value>
void writeValue(Writer& writer, const Value& value) {
  if constexpr (CodedRecord<Value>) {
    writer.beginObject();
    std::apply([&](const auto&... field) { (writeField(writer, value, field), ...); },
               Coding<Value>::fields);
    writer.endObject();
  } else if constexpr (kIsArray<Value>) {
    writer.beginArray();
    for (const auto& element : value) writeValue(writer, element);
    writer.endArray();
  } else if constexpr (CodedText<Value>) {
    writer.value(std::string_view(Coding<Value>::text(value)));
  } else if constexpr (std::same_as<Value, Date>) {
    writer.value(std::string_view(ISO8601Date::text(value)));
  } else if constexpr (std::same_as<Value, std::string>) {
    writer.value(std::string_view(value));
  } else {
    writer.value(value);
  }
}

template <typename Value>
void readValue(Reader& reader, Value& value);

template <typename Record>
void readRecord(Reader& reader, Record& record) {
  constexpr auto& fields = Coding<Record>::fields;
  std::array<bool, std::tuple_size_v<std::decay_t<decltype(fields)>>> isFound{};
  const auto readField = [&](std::string_view key, const auto& field, bool& found) {
    if (key != field.key) return false;
    const Reader::Step step(reader, field.key);
    readValue(reader, record.*field.member);
    found = true;
    return true;
  };
  const auto require = [&]<typename Value>(const Field<Record, Value>& field, bool found) {
    if (!found && !kIsOptional<Value>) reader.failMissing(field.key);
  };
  const auto overFields = [&]<std::size_t... i>(std::index_sequence<i...>) {
    reader.beginObject();
    while (const auto key = reader.nextKey())
      if (!(readField(*key, std::get<i>(fields), isFound[i]) || ...)) reader.skipValue();
    (require(std::get<i>(fields), isFound[i]), ...);
  };
  overFields(std::make_index_sequence<isFound.size()>());
}

template <typename Element>
void readArray(Reader& reader, std::vector<Element>& elements) {
  elements.clear();
  reader.beginArray();
  while (reader.nextElement()) {
    const Reader::Step step(reader, elements.size());
    Element element{};
    readValue(reader, element);
    elements.push_back(std::move(element));
  }
}

template <typename Value>
void readValue(Reader& reader, Value& value) {
  if constexpr (kIsOptional<Value>) {
    value.reset();
    if (!reader.skipNull()) readValue(reader, value.emplace());
  } else if constexpr (CodedRecord<Value>) {
    readRecord(reader, value);
  } else if constexpr (kIsArray<Value>) {
    readArray(reader, value);
  } else if constexpr (CodedText<Value>) {
    const auto known = Coding<Value>::value(reader.readString());
    if (!known) reader.failCorrupted("holds an unknown name.");
    value = *known;
  } else if constexpr (std::same_as<Value, Date>) {
    const auto date = ISO8601Date::parse(reader.readString());
    if (!date) reader.failCorrupted("is no date of the form 2024-01-31T12:00:00Z.");
    value = *date;
  } else if constexpr (std::floating_point<Value>) {
    constexpr Value kMinusInfinity = -std::numeric_limits<Value>::infinity();
    if (reader.skipNull()) {
      value = kMinusInfinity;
    } else if constexpr (std::same_as<Value, float>) {
      value = reader.readFloat();
    } else {
      value = reader.readDouble();
    }
  } else if constexpr (std::same_as<Value, bool>) {
    value = reader.readBool();
  } else if constexpr (std::same_as<Value, std::string>) {
    value = reader.readString();
  } else {
    static_assert(std::same_as<Value, std::int64_t>, "no JSON form for this type");
    value = reader.readInteger();
  }
}

}  // namespace orvane::json

namespace orvane {

template <typename Record>
std::string JSONForm<Record>::encode(const Record& record) {
  json::Writer writer;
  json::writeValue(writer, record);
  return writer.take();
}

template <typename Record>
Record JSONForm<Record>::decode(std::string_view text) {
  json::Reader reader(text);
  Record record{};
  json::readValue(reader, record);
  reader.finish();
  return record;
}

}  // namespace orvane

/// In one source file, for each record that others encode and decode.
#define ORVANE_JSON_FORM(Record) template struct JSONForm<Record>
