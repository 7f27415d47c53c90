#pragma once

#include <cstddef>

#include "orvane/platform/progress.h"

namespace orvane {

class PCMBufferPool;

/// How a long operation is done, beside what it does: its result does not depend on it.
struct Execution {
  std::size_t threadCount = 1;           ///< threads of this call, the caller's included
  ProgressObserver* observer = nullptr;  ///< told of the stages; may cancel; not owned
  /// For who does the same with file after file: where to take buffers from. Null for none; not
  /// owned.
  PCMBufferPool* buffers = nullptr;
};

}  // namespace orvane
