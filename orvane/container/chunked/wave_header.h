#pragma once

#include "orvane/container/pcm_file_outline.h"

namespace orvane {

/// A WAVE file in one of its dresses: RIFF, from 4 GiB on RF64, or RF64 and BW64 from the first
/// byte on (EBU Tech 3306, ITU-R BS.2088). Throws `UnwritableFormat`.
PCMFileOutline outlineWave(const PCMFileSpecification& specification);

/// A Sony Wave64 file.
PCMFileOutline outlineWave64(const PCMFileSpecification& specification);

}  // namespace orvane
