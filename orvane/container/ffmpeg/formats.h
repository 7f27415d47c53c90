#pragma once

#include <string>

extern "C" {
#include <libavformat/avformat.h>
}

#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// The demuxers that may touch a file, as a comma-separated list of names: those that read one
/// file's own bytes. Playlists, manifests, session descriptions, scripts, image sequences,
/// synthesisers and devices are not among them.
const std::string& allowedDemuxers();

/// Every audio decoder, as a comma-separated list of names: video is never decoded, not even while
/// probing.
const std::string& allowedDecoders();

/// The demuxer of the container that `containerHint` names; without a hint the one that FFmpeg
/// finds by the file's bytes. Null when it is no audio file or one that `allowedDemuxers` leaves
/// out.
const AVInputFormat* demuxerFor(const InputFile& file, FourCC containerHint);

}  // namespace orvane
