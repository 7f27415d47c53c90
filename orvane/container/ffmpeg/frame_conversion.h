#pragma once

#include <cstddef>

extern "C" {
#include <libavutil/frame.h>
}

#include "orvane/platform/planar_view.h"

namespace orvane {

/// Converts `count` frames of `frame`, from frame `start` on, to the start of `room`. Integers of n
/// bits are divided by 2^(n−1), floats pass bit for bit, 64-bit floats are rounded. False for a
/// sample format this does not know.
bool convertFrame(const AVFrame& frame, std::size_t start, std::size_t count,
                  MutablePlanarView room);

}  // namespace orvane
