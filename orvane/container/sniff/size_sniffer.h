#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "orvane/platform/four_cc.h"

namespace orvane {

/// Recognises headers that have no signature worth the name but state the size of their file, which
/// must hold to the byte: HTK waveforms, MPC 2000 samples, DVMS messages, RSO sounds. `head` is the
/// beginning of `size` bytes. Gives the file type code.
std::optional<FourCC> sniffBySize(std::span<const std::byte> head, std::uint64_t size);

}  // namespace orvane
