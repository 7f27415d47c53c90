#include "cli/output/output_file.h"

#include <sys/stat.h>

#include <optional>

#include "orvane/edit/edit_output_guard.h"

namespace orvane::cli {
namespace {

namespace fs = std::filesystem;

/// What makes two names the same file.
std::optional<std::pair<dev_t, ino_t>> identityOf(const fs::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return std::pair(status.st_dev, status.st_ino);
}

}  // namespace

void ReadFiles::add(const fs::path& file) {
  if (const auto identity = identityOf(file)) files_.emplace(*identity, file);
}

void ReadFiles::requireNone(const fs::path& output) const {
  const auto identity = identityOf(output);
  const auto same = identity ? files_.find(*identity) : files_.end();
  if (same == files_.end()) return;
  EditOutputGuard::assertNotInPlace(same->second, output);
  OutputFile::writing(output, [&] {
    throw PlatformError(output,
                        "it is another name of \"" + same->second.string() + "\", which is read");
  });
}

AtomicFile OutputFile::open(const fs::path& output, bool force) {
  return writing(output, [&] { return AtomicFile(output, existing(force)); });
}

void OutputFile::requireWritable(const fs::path& output, bool force) {
  const fs::path folder = output.parent_path();
  std::error_code ignored;
  if (!folder.empty() && !fs::is_directory(folder, ignored))
    throw PlatformError(output, "there is no folder \"" + folder.string() + "\"");
  open(output, force);  // and dropped again
}

}  // namespace orvane::cli
