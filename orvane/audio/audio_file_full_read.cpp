#include "orvane/audio/audio_file_full_read.h"

#include <algorithm>

#include "orvane/core/pcm_buffer_allocation.h"

namespace orvane::AudioFileFullRead {

void read(AudioFile& file, PCMBuffer& buffer) {
  file.read(buffer);
  const std::uint32_t capacity = buffer.frameCapacity();
  std::uint32_t offset = buffer.frameLength();
  if (offset == capacity || buffer.channelCount() == 0) return;

  const auto scratch = core::PCMBufferAllocation::make(buffer.format(), kScratchFrames);
  if (!scratch) return;  // what was read stays
  while (offset < capacity) {
    file.read(*scratch);
    if (scratch->frameLength() == 0) break;
    const std::uint32_t frames = std::min(scratch->frameLength(), capacity - offset);
    for (std::uint32_t c = 0; c < buffer.channelCount(); ++c)
      std::copy_n(scratch->channel(c), frames, buffer.channel(c) + offset);
    offset += frames;
  }
  buffer.setFrameLength(offset);
}

}  // namespace orvane::AudioFileFullRead
