#pragma once

#include <cmath>
#include <limits>

namespace orvane::core {

/// A linear amplitude in decibels: 20·log10(amplitude). Minus infinity for 0 and below, and for
/// NaN.
inline float linearToDB(float amplitude) noexcept {
  return amplitude > 0 ? 20.0F * std::log10(amplitude) : -std::numeric_limits<float>::infinity();
}

inline double linearToDB(double amplitude) noexcept {
  return amplitude > 0 ? 20.0 * std::log10(amplitude) : -std::numeric_limits<double>::infinity();
}

}  // namespace orvane::core
