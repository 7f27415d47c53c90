#pragma once

#include <cstdint>

/// Flags of linear PCM as a CAF file states them. The second one means the opposite of its namesake
/// in a stream description.
namespace orvane::CAFFlags {

inline constexpr std::uint32_t isFloat = 1U << 0;
inline constexpr std::uint32_t isLittleEndian = 1U << 1;

}  // namespace orvane::CAFFlags
