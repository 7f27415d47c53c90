#pragma once

#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// The chunks of a file that say something else than what its audio is and how it is stored:
/// markers, texts, descriptions. Each identifier once, in the file's order; 0 stands for chunks
/// without four letters of their own. Filling is left out. Empty for files without chunks.
ORVANE_API std::vector<FourCC> sideChunks(const InputFile& file);

}  // namespace orvane
