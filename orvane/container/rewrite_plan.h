#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// What becomes of a file that gets other audio and keeps everything else.
struct RewriteRequest {
  std::int64_t frameCount = 0;                ///< of the new audio
  std::optional<std::uint32_t> frameBytes{};  ///< of it; absent: as in the file
  bool hasChangedAudio = false;               ///< CAF files count such edits
  /// Chunks, by their place in the list, that get another body, or none: they are left out.
  std::vector<std::pair<std::size_t, std::optional<std::vector<std::byte>>>> chunkChanges{};
  /// Chunks that are put in front of the audio.
  std::vector<std::pair<FourCC, std::vector<std::byte>>> newChunks{};
};

/// How a file is made from another one: pieces of it, bytes in place of some of its own, and the
/// audio.
struct RewritePlan {
  struct Piece {
    enum class Kind {
      copy,   ///< `size` bytes of the original, from `offset` on
      bytes,  ///< these
      audio   ///< `size` bytes of samples
    };
    Kind kind = Kind::copy;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    std::vector<std::byte> bytes{};

    bool operator==(const Piece&) const = default;
  };

  std::vector<Piece> pieces{};  ///< in file order
  std::uint64_t fileBytes = 0;  ///< of the new file

  bool operator==(const RewritePlan&) const = default;
};

/// Plans to give the file that `stream` describes new audio. Everything else stays byte for byte
/// and in its order, also what stands before the form, behind the last chunk, and in second audio
/// chunks; sizes and frame counts follow the audio. A request that changes nothing gives the file
/// as it is, but for sizes that are not true and a pad byte that is missing behind the audio.
///
/// Throws `UnwritableFormat` where the result would be larger than the container can be, and for
/// files that have no audio of linear PCM or are none of those that are written.
ORVANE_API RewritePlan planRewrite(const InputFile& file, const PCMStream& stream,
                                   const RewriteRequest& request);

/// Writes the new file. `audio` is called once, to write the samples.
ORVANE_API void writeRewrite(const RewritePlan& plan, const InputFile& file, AtomicFile& target,
                             const std::function<void(AtomicFile&)>& audio);

}  // namespace orvane
