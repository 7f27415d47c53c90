#pragma once

#include "orvane/container/pcm_file_outline.h"

namespace orvane {

/// An AIFF file, or an AIFF-C file of integers (`NONE`) or floats (`fl32`, `fl64`). Throws
/// `UnwritableFormat`.
PCMFileOutline outlineAIFF(const PCMFileSpecification& specification);

}  // namespace orvane
