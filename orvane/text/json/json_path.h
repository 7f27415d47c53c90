#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::json {

/// One step into a document: a key of an object or, when that is empty, an element of an array.
struct PathStep {
  std::string_view key{};
  std::size_t index = 0;
};

/// "chapters.entries[3].name"; empty for the document itself.
std::string keyPath(const std::vector<PathStep>& steps);

}  // namespace orvane::json
