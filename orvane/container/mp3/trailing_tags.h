#pragma once

#include <cstdint>

#include "orvane/platform/input_file.h"

namespace orvane {

/// Where the tags begin that a file ends with: ID3v1, APEv1 and APEv2, Lyrics3v2. Its size without
/// any.
std::uint64_t startOfTrailingTags(const InputFile& file);

}  // namespace orvane
