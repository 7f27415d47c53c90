#pragma once

#include <string>
#include <string_view>

namespace orvane::json {

/// A well-formed JSON document without white space, spread over lines for people: two spaces per
/// level, one key or element per line, a line end at the end of the document.
std::string prettyPrinted(std::string_view compact);

}  // namespace orvane::json
