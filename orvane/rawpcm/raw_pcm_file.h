#pragma once

#include <cstdint>
#include <filesystem>

#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/platform/stage_progress.h"
#include "orvane/rawpcm/raw_pcm_format.h"
#include "orvane/rawpcm/raw_pcm_reader.h"

namespace orvane {

/// A headerless file whose frames are taken in order, piece by piece.
class ORVANE_TESTING_API RawPCMFile {
 public:
  /// Checks the file, the shape of the format, and the size, in that order. Throws
  /// `RawPCMImportError`. `observer` is told of "Reading", as a share of the whole file.
  RawPCMFile(const std::filesystem::path& url, const RawPCMFormat& format,
             const Execution& execution = {});

  const InputFile& file() const noexcept { return file_; }

  /// All frames of the file; at least 1.
  std::int64_t frameLength() const noexcept { return frameLength_; }

  /// Reads the next frames into `buffer`, from its start, up to its capacity, and sets its frame
  /// length; 0 at the end. Channels in stored order, of which the buffer must have as many. Throws
  /// `RawPCMImportError` and `Cancelled`.
  void read(PCMBuffer& buffer);

 private:
  InputFile file_;
  RawPCMFormat format_;
  std::int64_t frameLength_;
  std::size_t threadCount_;
  StageProgress progress_;
  std::int64_t position_ = 0;  ///< next frame
};

}  // namespace orvane
