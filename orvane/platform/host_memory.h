#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "orvane/platform/export.h"

namespace orvane {

/// The machine's memory figures, in bytes, bounded by the process's cgroup limits when there are
/// any.
struct HostMemory {
  /// What the statistics service reports; absent when it fails.
  struct Statistics {
    std::int64_t freeAndPurgeableBytes = 0;  ///< free, or given back by the kernel at once
    std::int64_t inactiveBytes = 0;          ///< cached file contents not used lately

    bool operator==(const Statistics&) const = default;
  };

  std::int64_t physicalBytes = 0;
  std::optional<Statistics> statistics{};
  /// Whether one buffer may reach 4 GiB.
  bool supportsLargeBuffers = true;

  bool operator==(const HostMemory&) const = default;

  /// The figures as they are now, or those that a `ScopedHostMemory` sets. From any thread.
  ORVANE_API static HostMemory current();

  /// The figures as the files `proc/meminfo`, `proc/self/cgroup` and those below `sys/fs/cgroup`
  /// (versions 1 and 2) under `systemRoot` give them. Files that are missing or hold no number
  /// bound nothing; without a memory size in them the system is asked for it.
  ORVANE_API static HostMemory read(const std::filesystem::path& systemRoot);
};

/// Replaces `HostMemory::current()` for as long as it lives; for tests. Not nestable.
class ORVANE_API ScopedHostMemory {
 public:
  explicit ScopedHostMemory(const HostMemory& memory);
  ~ScopedHostMemory();
  ScopedHostMemory(const ScopedHostMemory&) = delete;
  ScopedHostMemory& operator=(const ScopedHostMemory&) = delete;
};

}  // namespace orvane
