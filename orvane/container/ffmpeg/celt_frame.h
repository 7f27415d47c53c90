#pragma once

#include <cstdint>
#include <span>

namespace orvane {

/// What the first symbols of an Opus packet tell (RFC 6716).
namespace CELTFrame {

/// Whether a packet is in the CELT mode alone; headers, which begin with a letter, are not.
bool isOne(std::span<const std::uint8_t> packet) noexcept;

/// What a packet of one frame stands for, in units of 2.5 ms.
unsigned duration(std::span<const std::uint8_t> packet) noexcept;

/// Whether a packet holds one frame, which is not coded as a transient: behind two of them, a
/// decoder knows nothing of the band energies of earlier frames (4.3.5).
bool isSteady(std::span<const std::uint8_t> packet) noexcept;

}  // namespace CELTFrame
}  // namespace orvane
