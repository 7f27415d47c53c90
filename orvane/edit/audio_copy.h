#pragma once

#include <cstddef>
#include <memory>
#include <optional>

#include "orvane/audio/audio_source.h"
#include "orvane/container/pcm_file_writer.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Writes all of a source that nothing has been read of to a file of as many channels and frames,
/// some MiB of it in memory at a time. Headerless samples that a float would not hold, of 32-bit
/// integers and 64-bit floats, go over as they are stored where the file stores such. Throws what
/// reading and writing throw, and `PlatformError` for a source that ends before its length.
ORVANE_API void copyAudio(AudioSource& source, PCMFileWriter& writer,
                          const Execution& execution = {});

/// Writes audio that goes by in slices; the stage is "Writing". Throws what writing throws, and
/// `Cancelled` when the observer asks for it.
ORVANE_API void copyAudio(const SlicedAudio& audio, PCMFileWriter& writer,
                          const Execution& execution = {});

/// The audio that an edit has made of a source, or one channel of it, written with dither, where
/// the writer adds any, for those samples only that the edit has changed. `source`: one that
/// nothing has been read of; `frames`: where its frames are in the audio. The file holds the
/// source's samples.
ORVANE_API void copyEdited(const SlicedAudio& audio, std::shared_ptr<AudioSource> source,
                           const FrameMap& frames, std::optional<std::size_t> channel,
                           PCMFileWriter& writer, const Execution& execution = {});

}  // namespace orvane
