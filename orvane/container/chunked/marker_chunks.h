#pragma once

#include <vector>

#include "orvane/container/chapter_mark.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"

/// Places in the audio that chunked containers name. `stream` is what the container's parser found;
/// what a chunk does not hold whole is passed over, and so is everything beyond the first
/// `kMaximumEmbeddedChapters` marks.
namespace orvane::MarkerChunks {

/// `cue ` with the labels, notes and regions of `LIST` chunks of type `adtl`.
ORVANE_TESTING_API std::vector<ChapterMark> ofRIFF(const InputFile& file, const PCMStream& stream);

/// `MARK`.
ORVANE_TESTING_API std::vector<ChapterMark> ofAIFF(const InputFile& file, const PCMStream& stream);

/// `mark` with the names of `strg`. Markers that end something are no beginnings and left out.
ORVANE_TESTING_API std::vector<ChapterMark> ofCAF(const InputFile& file, const PCMStream& stream);

}  // namespace orvane::MarkerChunks
