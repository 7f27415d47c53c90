#pragma once

#include <cstdint>
#include <optional>

#include "orvane/platform/export.h"

namespace orvane {

/// The machine's memory figures, in bytes, bounded by the process's cgroup limit when there is one.
struct HostMemory {
  /// What the statistics service reports; absent when it fails.
  struct Statistics {
    std::int64_t freeAndPurgeableBytes = 0;  ///< free and at once reclaimable
    std::int64_t inactiveBytes = 0;

    bool operator==(const Statistics&) const = default;
  };

  std::int64_t physicalBytes = 0;
  std::optional<Statistics> statistics{};
  /// Whether one buffer may reach 4 GiB.
  bool supportsLargeBuffers = true;

  bool operator==(const HostMemory&) const = default;

  /// The figures as they are now.
  ORVANE_API static HostMemory current();
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
