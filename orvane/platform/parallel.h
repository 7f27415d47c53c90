#pragma once

#include <cstddef>
#include <functional>

#include "orvane/platform/export.h"

namespace orvane {

/// Calls `task(0) … task(taskCount − 1)`, each once, on up to `threadCount` threads (the calling
/// one included), and returns when all are done. With `threadCount` 1 the calls come in order on
/// the calling thread. The first exception that a task throws is passed on after the others have
/// ended; tasks not yet begun are then dropped.
ORVANE_API void parallelFor(std::size_t threadCount, std::size_t taskCount,
                            const std::function<void(std::size_t)>& task);

}  // namespace orvane
