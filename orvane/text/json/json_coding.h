#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <limits>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "orvane/platform/uuid.h"
#include "orvane/text/iso8601_date.h"
#include "orvane/text/json/json_reader.h"
#include "orvane/text/json/json_text.h"
#include "orvane/text/json/json_writer.h"

/// How records become JSON and come back. A record says once which fields it has, under whose names
/// they are written,
///
///   ORVANE_JSON_FIELDS(LoudnessSample, time, lufs);
///
/// a range of numbers, which is written as an array of both, what its bounds are,
///
///   template <>
///   struct Coding<ClosedTimeRange> {
///     static constexpr std::pair bounds{&ClosedTimeRange::lowerBound,
///                                       &ClosedTimeRange::upperBound};
///   };
///
/// and an enumeration, of which `rawValue` gives the texts, how they are read and, if it likes,
/// what any other text is:
///
///   template <>
///   struct Coding<Stem> {
///     static constexpr auto value = stemFromRawValue;
///     static constexpr const char* unknown = "is no stem.";
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
concept CodedRange = requires {
  Coding<Value>::bounds;
};

template <typename Value>
concept CodedText = requires(std::string_view text) {
  Coding<Value>::value(text);
};

/// A record may tell its optional numbers that are not finite from absent ones; they are null then,
/// as required ones are.
template <typename Record>
inline constexpr bool kWritesUndefinedNumbers = false;

template <typename Value>
inline constexpr bool kIsOptional = false;
template <typename Value>
inline constexpr bool kIsOptional<std::optional<Value>> = true;

template <typename Value>
inline constexpr bool kIsOptionalNumber = false;
template <std::floating_point Number>
inline constexpr bool kIsOptionalNumber<std::optional<Number>> = true;

template <typename Value>
inline constexpr bool kIsArray = false;
template <typename Value>
inline constexpr bool kIsArray<std::vector<Value>> = true;

template <typename Record>
inline constexpr std::size_t kFieldCount =
    std::tuple_size_v<std::decay_t<decltype(Coding<Record>::fields)>>;

/// The places of a record's fields in the order of their keys.
template <typename Record>
inline constexpr auto kByAlphabet = [] {
  constexpr auto keys = std::apply([](const auto&... field) { return std::array{field.key...}; },
                                   Coding<Record>::fields);
  std::array<std::size_t, kFieldCount<Record>> places{};
  std::iota(places.begin(), places.end(), 0);
  std::sort(places.begin(), places.end(),
            [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  return places;
}();

template <typename Value>
void writeValue(Writer& writer, const Value& value);

/// Absent fields are not written, nor are optional numbers that are not finite, where such a number
/// would be null and mean nothing.
template <typename Record, typename Value>
bool isWritten(const Writer& writer, const Value& value) {
  if constexpr (kIsOptional<Value>) {
    if (!value) return false;
    if constexpr (kIsOptionalNumber<Value>)
      return std::isfinite(*value) || writer.style().mustBeFinite ||
             kWritesUndefinedNumbers<Record>;
  }
  return true;
}

template <typename Record, typename Value>
void writeField(Writer& writer, std::string_view key, const Value& value) {
  if (!isWritten<Record>(writer, value)) return;
  writer.key(key);
  if constexpr (kIsOptional<Value>) {
    writeValue(writer, *value);
  } else {
    writeValue(writer, value);
  }
}

/// The record without the keys that are not wanted.
template <typename Record, typename IsWanted>
void writeRecord(Writer& writer, const Record& record, IsWanted isWanted) {
  constexpr auto& fields = Coding<Record>::fields;
  const auto write = [&](const auto& field) {
    if (isWanted(field.key)) writeField<Record>(writer, field.key, record.*field.member);
  };
  writer.beginObject();
  [&]<std::size_t... i>(std::index_sequence<i...>) {
    if (writer.style().sortsKeys) {
      (write(std::get<kByAlphabet<Record>[i]>(fields)), ...);
    } else {
      (write(std::get<i>(fields)), ...);
    }
  }
  (std::make_index_sequence<kFieldCount<Record>>());
  writer.endObject();
}

template <typename Value>
void writeValue(Writer& writer, const Value& value) {
  if constexpr (CodedRecord<Value>) {
    writeRecord(writer, value, [](std::string_view) { return true; });
  } else if constexpr (CodedRange<Value>) {
    writer.beginArray();
    writeValue(writer, value.*Coding<Value>::bounds.first);
    writeValue(writer, value.*Coding<Value>::bounds.second);
    writer.endArray();
  } else if constexpr (kIsArray<Value>) {
    writer.beginArray();
    for (const auto& element : value) writeValue(writer, element);
    writer.endArray();
  } else if constexpr (CodedText<Value>) {
    writer.value(std::string_view(rawValue(value)));
  } else if constexpr (std::same_as<Value, Date>) {
    if (!ISO8601Date::hasText(value)) writer.fail("lies outside the years 0 to 9999.");
    writer.value(std::string_view(ISO8601Date::text(value)));
  } else if constexpr (std::same_as<Value, UUID>) {
    writer.value(std::string_view(value.text()));
  } else if constexpr (std::convertible_to<Value, std::string_view>) {
    writer.value(std::string_view(value));
  } else if constexpr (std::integral<Value> && !std::same_as<Value, bool>) {
    writer.value(static_cast<std::int64_t>(value));
  } else {
    writer.value(value);
  }
}

template <typename Value>
void readValue(Reader& reader, Value& value);

template <typename Record>
void readRecord(Reader& reader, Record& record) {
  constexpr auto& fields = Coding<Record>::fields;
  std::array<bool, kFieldCount<Record>> isFound{};
  const auto readField = [&](std::string_view key, const auto& field, bool& found) {
    if (key != field.key) return false;
    const Reader::Step step(reader, field.key);
    reader.requireFirst(found);
    auto& value = record.*field.member;
    if constexpr (kWritesUndefinedNumbers<Record> &&
                  kIsOptionalNumber<std::decay_t<decltype(value)>>)
      readValue(reader, value.emplace());
    else
      readValue(reader, value);
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

template <typename Range>
void readRange(Reader& reader, Range& range) {
  const auto [lower, upper] = Coding<Range>::bounds;
  std::size_t count = 0;
  reader.beginArray();
  while (count < 3 && reader.nextElement()) {
    const Reader::Step step(reader, count++);
    (count == 1 ? range.*lower : range.*upper) = reader.readDouble();
  }
  if (count != 2) reader.failCorrupted("does not hold two numbers.");
  if (range.*lower > range.*upper) reader.failCorrupted("ends before it starts.");
}

template <typename Value>
const char* unknownName() {
  if constexpr (requires { Coding<Value>::unknown; }) {
    return Coding<Value>::unknown;
  } else {
    return "holds an unknown name.";
  }
}

template <typename Value>
void readValue(Reader& reader, Value& value) {
  if constexpr (kIsOptional<Value>) {
    value.reset();
    if (!reader.skipNull()) readValue(reader, value.emplace());
  } else if constexpr (CodedRecord<Value>) {
    readRecord(reader, value);
  } else if constexpr (CodedRange<Value>) {
    readRange(reader, value);
  } else if constexpr (kIsArray<Value>) {
    readArray(reader, value);
  } else if constexpr (CodedText<Value>) {
    const auto known = Coding<Value>::value(reader.readString());
    if (!known) reader.failCorrupted(unknownName<Value>());
    value = *known;
  } else if constexpr (std::same_as<Value, Date>) {
    const auto date = ISO8601Date::parse(reader.readString());
    if (!date) reader.failCorrupted("is no date of the form 2024-01-31T12:00:00Z.");
    value = *date;
  } else if constexpr (std::same_as<Value, UUID>) {
    const auto uuid = UUID::parse(reader.readString());
    if (!uuid) reader.failCorrupted("is no UUID.");
    value = *uuid;
  } else if constexpr (std::floating_point<Value>) {
    constexpr Value kMinusInfinity = -std::numeric_limits<Value>::infinity();
    if (!reader.mustBeFinite() && reader.skipNull()) {
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

template <typename Value>
std::string encode(const Value& value, const Style& style) {
  Writer writer(style);
  writeValue(writer, value);
  return writer.take();
}

template <typename Value>
Value decode(std::string_view text, const Style& style) {
  Reader reader(text, style);
  Value value{};
  readValue(reader, value);
  reader.finish();
  return value;
}

}  // namespace orvane::json

namespace orvane {

template <typename Record>
std::string JSONForm<Record>::encode(const Record& record, const json::Style& style) {
  return json::encode(record, style);
}

template <typename Record>
Record JSONForm<Record>::decode(std::string_view text) {
  return json::decode<Record>(text, {});
}

}  // namespace orvane

#define ORVANE_JSON_FIELDS(Type, ...)                                              \
  template <>                                                                      \
  struct Coding<Type> {                                                            \
    using Record = Type;                                                           \
    static constexpr std::tuple fields{ORVANE_SCAN_27(ORVANE_FIELD(__VA_ARGS__))}; \
  }
// A macro cannot call itself; what it leaves to be called is found by scanning it again, once per
// field.
#define ORVANE_FIELD(name, ...) \
  Field{#name, &Record::name} __VA_OPT__(, ORVANE_NEXT_FIELD ORVANE_NO_ARGUMENTS(__VA_ARGS__))
#define ORVANE_NEXT_FIELD() ORVANE_FIELD
#define ORVANE_NO_ARGUMENTS ()
#define ORVANE_SCAN_27(...) ORVANE_SCAN_9(ORVANE_SCAN_9(ORVANE_SCAN_9(__VA_ARGS__)))
#define ORVANE_SCAN_9(...) ORVANE_SCAN_3(ORVANE_SCAN_3(ORVANE_SCAN_3(__VA_ARGS__)))
#define ORVANE_SCAN_3(...) ORVANE_SCAN(ORVANE_SCAN(ORVANE_SCAN(__VA_ARGS__)))
#define ORVANE_SCAN(...) __VA_ARGS__

/// In one source file, for each record that others encode and decode.
#define ORVANE_JSON_FORM(Record) template struct JSONForm<Record>
