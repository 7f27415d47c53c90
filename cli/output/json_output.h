#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

/// JSON as the program prints it: one document per line, pure ASCII, keys in a fixed order.
namespace orvane::cli::JsonOutput {

using Json = nlohmann::ordered_json;

/// Goes up when a key changes its meaning or is removed.
inline constexpr int kSchemaVersion = 1;

/// The number with its shortest digits; null when it is not finite.
Json number(float value);
Json number(double value);

/// The document in one line, with its line end. What is no UTF-8 in a text becomes U+FFFD.
std::string line(const Json& document);

/// What stands in the place of a file that failed.
Json failure(std::string_view name, std::string_view message);

}  // namespace orvane::cli::JsonOutput
