#pragma once

#include <cstdint>
#include <optional>

#include "orvane/container/metadata_changes.h"
#include "orvane/container/pcm_encoding.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// How a file's audio comes to be stored in a file that is made of it, in the same container.
struct StoredFormat {
  /// Unlike in the file: how samples are stored, and whether they are those of one channel alone.
  struct Change {
    std::optional<PCMEncoding> encoding{};
    bool isOneChannel = false;
  };

  StreamDescription dataFormat{};
  SampleEncoding sample{};
  /// The header that says so, and what is not true of one channel.
  MetadataChanges changes{};

  bool operator==(const StoredFormat&) const = default;
};

/// Of `frameCount` frames, made of linear PCM in a container that is written. The byte order stays
/// where the container knows both; so does all else that the header says, such as which
/// loudspeakers the channels are for. One channel alone is for none.
///
/// Throws `UnwritableFormat` where the container does not store such samples, and `PlatformError`.
ORVANE_TESTING_API StoredFormat storedFormat(const InputFile& file, const PCMStream& stream,
                                             const StoredFormat::Change& change,
                                             std::int64_t frameCount);

}  // namespace orvane
