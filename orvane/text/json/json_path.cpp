#include "orvane/text/json/json_path.h"

namespace orvane::json {

std::string keyPath(const std::vector<PathStep>& steps) {
  std::string path;
  for (const PathStep& step : steps) {
    if (step.key.empty()) {
      path += "[" + std::to_string(step.index) + "]";
    } else {
      if (!path.empty()) path += ".";
      path += step.key;
    }
  }
  return path;
}

}  // namespace orvane::json
