#pragma once

#include <cstdint>

#include "orvane/platform/export.h"

namespace orvane::MusicRulerTicks {

/// Which bars of a ruler have a label: every one, every second, fourth … 512th, so that at most 12
/// labels are visible at once as long as no more than 6,144 bars are.
ORVANE_API std::int64_t labelEvery(double barsVisible);

}  // namespace orvane::MusicRulerTicks
