#pragma once

#include <cstddef>
#include <span>

#include "orvane/platform/export.h"

/// Arithmetic on runs of samples. Every result is that of plain single-precision operations, each
/// rounded, bit for bit on every instruction set.
namespace orvane::SampleArithmetic {

/// x · gain.
ORVANE_API void scale(std::span<float> samples, float gain) noexcept;

/// x · gain of the same index; as many gains as samples.
ORVANE_API void multiply(std::span<float> samples, const float* gains) noexcept;

/// −x, of zeros and what is no number too.
ORVANE_API void negate(std::span<float> samples) noexcept;

/// x + constant.
ORVANE_API void offset(std::span<float> samples, float constant) noexcept;

/// x + other · gain of the same index; as many others as samples.
ORVANE_API void addScaled(std::span<float> samples, const float* others, float gain) noexcept;

/// The larger of x and the other of the same index, none of them NaN. `others` may lie within
/// `samples` or behind it.
ORVANE_API void raise(std::span<float> samples, const float* others) noexcept;

/// Puts 0 for NaN and infinities; whether there were any.
ORVANE_API bool silenceNonFinite(std::span<float> samples) noexcept;

/// destination = a · gainsOfA + b · gainsOfB.
ORVANE_API void mix(const float* a, const float* gainsOfA, const float* b, const float* gainsOfB,
                    float* destination, std::size_t count) noexcept;

}  // namespace orvane::SampleArithmetic
