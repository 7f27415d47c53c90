#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "orvane/container/audio_file.h"
#include "orvane/container/ffmpeg/demuxer.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// How much audio a stream decodes to.
struct StreamLength {
  std::int64_t frames = 0;
  bool isTruncated = false;  ///< the container breaks off, or promises more than it holds
};

/// What the container states of the stream's length; absent when that is nothing.
std::optional<std::int64_t> statedFrames(const Demuxer& demuxer);

/// Whether a demuxer that has come to its end with `frames` frames was cut short: its container
/// breaks off, or promises more than it holds.
bool breaksOff(const Demuxer& demuxer, std::int64_t frames);

/// Walks once through `file` and counts the frames that decoding it will deliver, priming and
/// padding already taken off. Decodes only where packets do not tell their length. Throws
/// `PlatformError`, and `Cancelled` when the options' observer asks for it.
StreamLength countFrames(const std::shared_ptr<const InputFile>& file,
                         const AudioFileOpenOptions& options, FourCC containerHint);

}  // namespace orvane
