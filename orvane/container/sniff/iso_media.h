#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "orvane/platform/four_cc.h"

namespace orvane {

/// The file type code of an ISO base media file (ISO/IEC 14496-12) by the brands of its `ftyp` box,
/// or of a QuickTime file without one; absent for what is neither.
std::optional<FourCC> sniffISOMedia(std::span<const std::byte> head);

}  // namespace orvane
