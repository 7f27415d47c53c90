#pragma once

#include "orvane/container/audio_file.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

/// Reads a whole file, however few frames its decoder delivers at a time.
namespace orvane::AudioFileFullRead {

/// Frames asked of a decoder at a time once it has delivered less than was asked for.
inline constexpr std::uint32_t kScratchFrames = 65'536;

/// Fills `buffer` from the file's next frame on, up to its capacity or the file's end, and sets its
/// frame length. The reader's errors are passed on.
ORVANE_API void read(AudioFile& file, PCMBuffer& buffer);

}  // namespace orvane::AudioFileFullRead
