#include "cli/output/abandoned_files.h"

#include <set>
#include <system_error>

#include "orvane/platform/atomic_file.h"

namespace orvane::cli {

void warnOfAbandonedFiles(const std::vector<std::filesystem::path>& outputs, Console& console) {
  std::set<std::filesystem::path> folders;
  for (const auto& output : outputs) {
    std::error_code failure;
    const auto place =
        std::filesystem::weakly_canonical(std::filesystem::absolute(output), failure);
    if (!failure) folders.insert(place.parent_path());
  }
  for (const auto& folder : folders)
    for (const auto& file : abandonedTemporaries(folder))
      console.warning(file.string() + " was left by a run that was killed and can be deleted");
}

}  // namespace orvane::cli
