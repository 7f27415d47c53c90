#pragma once

#include <cstdint>
#include <optional>

extern "C" {
#include <libavformat/avformat.h>
}

#include "orvane/platform/channel_layout.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// What the container says of a stream and FFmpeg does not heed, read by parsers of our own.
struct StatedAudio {
  /// Whether the codec leaves the order of its channels to the container: linear PCM, A-law, µ-law,
  /// ADPCM. Then `layout` counts, also when it is absent.
  bool decidesLayout = false;
  std::optional<ChannelLayout> layout{};
  /// Frames of the decoder's that come before the audio.
  std::int64_t priming = 0;
  /// Length of the audio, in seconds ÷ `timescale`.
  std::optional<std::int64_t> duration{};
  std::int64_t timescale = 1;

  /// The most frames there are at this rate; absent when the container does not tell.
  std::optional<std::int64_t> framesAt(int sampleRate) const;
};

StatedAudio statedAudio(const InputFile& file, const AVFormatContext& format,
                        const AVStream& stream, FourCC containerHint);

}  // namespace orvane
