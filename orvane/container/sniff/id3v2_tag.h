#pragma once

#include <cstdint>

#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// Where a file goes on behind the ID3v2 tags that it begins with (id3.org, ID3v2.4.0 structure,
/// 3.1): 0 without any, and beyond the file where a tag is cut short. One tag is usual; behind the
/// eighth no more are looked for.
ORVANE_API std::uint64_t endOfID3v2Tags(const InputFile& file);

}  // namespace orvane
