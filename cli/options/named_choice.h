#pragma once

#include <string>
#include <string_view>

#include "cli/usage_error.h"

namespace orvane::cli {

/// What a name stands for, in pairs of names and values; `what` was given it. A `UsageError` that
/// lists the names for any other.
template <typename Choices>
auto namedChoice(const Choices& choices, const std::string& what, const std::string& name) {
  std::string known;
  for (const auto& [text, value] : choices) {
    if (text == name) return value;
    known += (known.empty() ? "" : ", ") + std::string(text);
  }
  throw UsageError(what + ": unknown name '" + name + "'; the names are " + known);
}

/// The name of a value that stands among the choices.
template <typename Choices, typename Value>
std::string nameOfChoice(const Choices& choices, const Value& value) {
  for (const auto& [text, choice] : choices)
    if (choice == value) return std::string(text);
  return "";
}

}  // namespace orvane::cli
