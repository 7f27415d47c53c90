#pragma once

#include <cstdint>

#include "orvane/container/audio_file.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// Linear PCM straight from the file: blocks are read and converted on as many threads as allowed,
/// each into its own stretch of the buffer.
class PCMAudioFile final : public AudioFile {
 public:
  PCMAudioFile(InputFile file, PCMStream stream, const AudioFileOpenOptions& options);

  const AudioFileDescription& description() const noexcept override { return stream_.description; }
  std::int64_t frameLength() const noexcept override {
    return static_cast<std::int64_t>(stream_.frameCount);
  }
  void read(PCMBuffer& buffer) override;

 private:
  void readRange(PCMBuffer& buffer, std::uint32_t frames);

  InputFile file_;
  PCMStream stream_;
  AudioFileOpenOptions options_;
  std::uint64_t position_ = 0;  ///< next frame
};

}  // namespace orvane
