#pragma once

#include "orvane/audio/audio_source.h"
#include "orvane/container/pcm_file_writer.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// Writes all of a source that nothing has been read of to a file of as many channels and frames,
/// some MiB of it in memory at a time. Headerless samples that a float would not hold, of 32-bit
/// integers and 64-bit floats, go over as they are stored where the file stores such. Throws what
/// reading and writing throw, and `PlatformError` for a source that ends before its length.
ORVANE_API void copyAudio(AudioSource& source, PCMFileWriter& writer,
                          const Execution& execution = {});

/// Writes audio that is in memory; the stage is "Writing". Throws what writing throws, and
/// `Cancelled` when the observer asks for it.
ORVANE_API void copyAudio(PlanarView audio, PCMFileWriter& writer, const Execution& execution = {});

}  // namespace orvane
