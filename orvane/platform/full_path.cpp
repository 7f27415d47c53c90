#include "orvane/platform/full_path.h"

#include <system_error>

namespace orvane {

std::filesystem::path fullPath(const std::filesystem::path& path) {
  std::error_code failure;
  const auto full = std::filesystem::absolute(path, failure);
  if (failure) return path;
  const auto folder = std::filesystem::weakly_canonical(full.parent_path(), failure);
  return failure ? full : folder / full.filename();
}

}  // namespace orvane
