#pragma once

#include "orvane/container/pcm_file_outline.h"

namespace orvane {

/// A Core Audio Format file, little-endian.
PCMFileOutline outlineCAF(const PCMFileSpecification& specification);

}  // namespace orvane
