#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orvane/container/audio_file.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// Linear PCM straight from the file: blocks are read and converted on as many threads as allowed,
/// each into its own stretch of the buffer.
class PCMAudioFile final : public AudioFile {
 public:
  PCMAudioFile(std::shared_ptr<const InputFile> file, PCMStream stream,
               const AudioFileOpenOptions& options);

  const AudioFileDescription& description() const noexcept override { return stream_.description; }
  std::int64_t frameLength() override { return stream_.frameCount; }
  bool knowsFrameLength() const noexcept override { return true; }
  std::optional<std::int64_t> expectedFrameLength() const override { return stream_.frameCount; }
  void read(PCMBuffer& buffer) override;

 private:
  std::vector<ChapterMark> unsortedChapters() const override;
  void readRange(PCMBuffer& buffer, std::uint32_t frames);

  PCMStream stream_;
  AudioFileOpenOptions options_;
  std::int64_t position_ = 0;  ///< next frame
};

}  // namespace orvane
