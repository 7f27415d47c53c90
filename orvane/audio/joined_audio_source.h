#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include "orvane/audio/audio_source.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Several audio streams of one file as one source, the channels of one behind those of the other:
/// recordings that keep each channel in a stream of its own. Streams that end early are filled up
/// with silence, and a warning says so.
///
/// Without a `layout` two single channels are left and right, and of others nothing is known. The
/// channels keep the order of the streams in any case.
///
/// Throws what `AudioSource::open` throws, and `PlatformError` for streams that differ in rate or
/// in their number of channels, and for a layout of another number of channels.
ORVANE_API std::unique_ptr<AudioSource> openJoinedStreams(
    const std::filesystem::path& url, std::span<const int> streams,
    const std::optional<ChannelLayout>& layout = {}, const Execution& execution = {});

}  // namespace orvane
