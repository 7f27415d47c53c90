#pragma once

#include <span>

#include "orvane/platform/export.h"

namespace orvane::core::LoudnessMeasurement {

/// One RMS level for a programme, in dBFS: the power mean of its channels' RMS levels. Minus
/// infinity for no channels and for silence.
ORVANE_API float programRMSDBFS(std::span<const float> perChannelDBFS) noexcept;

}  // namespace orvane::core::LoudnessMeasurement
