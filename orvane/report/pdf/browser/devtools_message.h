#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"

/// The texts of the DevTools protocol: JSON objects of commands, replies and events.
namespace orvane::DevToolsMessage {

/// A command; `parameters` is a JSON object, `session` the page's, empty for the browser itself.
struct Command {
  std::string_view method{};
  std::string_view parameters = "{}";
  std::string_view session{};
};

ORVANE_TESTING_API std::string text(std::int64_t id, const Command& command);

/// What a message is for.
struct Heading {
  std::optional<std::int64_t> id{};  ///< of the command that is answered; absent in events
  std::string method{};              ///< of an event
  std::string session{};
  std::optional<std::string> error{};  ///< why the command was refused
};

/// Absent when the text is no message.
ORVANE_TESTING_API std::optional<Heading> heading(std::string_view message);

/// The value that these keys lead to, index for index into nested objects; absent when there is
/// none of that type.
using Keys = std::initializer_list<std::string_view>;
ORVANE_TESTING_API std::optional<std::string> stringAt(std::string_view message, Keys keys);
ORVANE_TESTING_API std::optional<bool> boolAt(std::string_view message, Keys keys);
ORVANE_TESTING_API std::optional<std::vector<double>> numbersAt(std::string_view message,
                                                                Keys keys);

/// `text` as a JSON string with its quotes.
ORVANE_TESTING_API std::string quoted(std::string_view text);

/// Appends the bytes that `text` stands for (RFC 4648, section 4, with padding); false when it
/// stands for none.
ORVANE_TESTING_API bool appendBase64(std::vector<std::byte>& bytes, std::string_view text);

}  // namespace orvane::DevToolsMessage
