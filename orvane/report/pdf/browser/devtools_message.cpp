#include "orvane/report/pdf/browser/devtools_message.h"

#include <array>

#include "orvane/text/json/json_reader.h"
#include "orvane/text/json/json_writer.h"

namespace orvane::DevToolsMessage {
namespace {

/// Goes to the value that `keys` lead to and takes it by `read`.
template <typename Value, typename Read>
std::optional<Value> valueAt(std::string_view message, Keys keys, Read read) {
  try {
    json::Reader reader(message);
    for (const std::string_view wanted : keys) {
      reader.beginObject();
      for (;;) {
        const auto key = reader.nextKey();
        if (!key) return std::nullopt;
        if (*key == wanted) break;
        reader.skipValue();
      }
    }
    return read(reader);
  } catch (const DecodingError&) {
    return std::nullopt;
  }
}

std::string readError(json::Reader& reader) {
  std::string result;
  reader.beginObject();
  while (const auto key = reader.nextKey()) {
    if (*key == "message")
      result = reader.readString();
    else
      reader.skipValue();
  }
  return result;
}

constexpr std::string_view kBase64Digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 64;

constexpr std::array<std::uint8_t, 256> kBase64Values = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kBase64Digits.size(); ++i)
    values[static_cast<unsigned char>(kBase64Digits[i])] = static_cast<std::uint8_t>(i);
  return values;
}();

}  // namespace

std::string quoted(std::string_view text) {
  json::Writer writer;
  writer.value(text);
  return writer.take();
}

std::string text(std::int64_t id, const Command& command) {
  std::string result =
      R"({"id":)" + std::to_string(id) + R"(,"method":)" + quoted(command.method) + R"(,"params":)";
  result += command.parameters;
  if (!command.session.empty()) result += R"(,"sessionId":)" + quoted(command.session);
  return result += '}';
}

std::optional<Heading> heading(std::string_view message) {
  try {
    json::Reader reader(message);
    Heading result;
    reader.beginObject();
    while (const auto key = reader.nextKey()) {
      if (*key == "id")
        result.id = reader.readInteger();
      else if (*key == "method")
        result.method = reader.readString();
      else if (*key == "sessionId")
        result.session = reader.readString();
      else if (*key == "error")
        result.error = readError(reader);
      else
        reader.skipValue();
    }
    reader.finish();
    if (!result.id && result.method.empty() && !result.error) return std::nullopt;
    return result;
  } catch (const DecodingError&) {
    return std::nullopt;
  }
}

std::optional<std::string> stringAt(std::string_view message, Keys keys) {
  return valueAt<std::string>(message, keys, [](json::Reader& r) { return r.readString(); });
}

std::optional<bool> boolAt(std::string_view message, Keys keys) {
  return valueAt<bool>(message, keys, [](json::Reader& r) { return r.readBool(); });
}

std::optional<std::vector<double>> numbersAt(std::string_view message, Keys keys) {
  return valueAt<std::vector<double>>(message, keys, [](json::Reader& reader) {
    std::vector<double> numbers;
    reader.beginArray();
    while (reader.nextElement()) numbers.push_back(reader.readDouble());
    return numbers;
  });
}

bool appendBase64(std::vector<std::byte>& bytes, std::string_view text) {
  if (text.size() % 4 != 0) return false;
  std::size_t digits = text.size();
  for (int i = 0; i < 2 && digits > 0 && text[digits - 1] == '='; ++i) --digits;
  bytes.reserve(bytes.size() + text.size() / 4 * 3);
  std::uint32_t bits = 0;
  int count = 0;
  for (const char c : text.substr(0, digits)) {
    const std::uint8_t value = kBase64Values[static_cast<unsigned char>(c)];
    if (value == kNoDigit) return false;
    bits = bits << 6 | value;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<std::byte>(bits >> count & 0xFFU));
  }
  return true;
}

}  // namespace orvane::DevToolsMessage
