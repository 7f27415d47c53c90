#pragma once

#include <cstdint>
#include <filesystem>

#include "orvane/edit/silence.h"
#include "orvane/platform/error.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"

/// Edits of audio that fits into memory once only: each writes its result to `url` as a WAV file of
/// 32-bit floats with the source's rate and layout, `chunkFrames` at a time. The samples are those
/// of the edit in memory. A file that stands under the name is replaced; nothing is left there when
/// writing fails.
///
/// All throw `EditStreamError`, before anything is written, and `PlatformError`.
namespace orvane::EditOperations {

class ORVANE_API EditStreamError : public Error {
 public:
  enum class Case {
    /// There is nothing to write, or nothing in the range; or the edit would leave nothing.
    invalidRange,
    allocationFailed,  ///< of the chunk, also for less than one frame
  };

  explicit EditStreamError(Case errorCase);
  ~EditStreamError() override;

  Case errorCase() const noexcept { return case_; }

  bool operator==(const EditStreamError& other) const { return case_ == other.case_; }

 private:
  Case case_;
};

/// Only the frames [startFrame, endFrame).
ORVANE_API void writeTrimmedWAV(const PCMBuffer& source, std::int64_t startFrame,
                                std::int64_t endFrame, const std::filesystem::path& url,
                                std::int64_t chunkFrames);

/// All others, see `cutRange`.
ORVANE_API void writeCutWAV(const PCMBuffer& source, std::int64_t startFrame, std::int64_t endFrame,
                            std::int64_t crossfadeFrames, const std::filesystem::path& url,
                            std::int64_t chunkFrames);

/// See `addSilence`. Only a range that is to be silenced must not be empty.
ORVANE_API void writeSilenceWAV(const PCMBuffer& source, std::int64_t startFrame,
                                std::int64_t endFrame, SilenceMode mode,
                                std::int64_t durationFrames, const std::filesystem::path& url,
                                std::int64_t chunkFrames);

/// With its sample peak at `targetDB`; silence stays as it is.
ORVANE_API void writePeakNormalizedWAV(const PCMBuffer& source, double targetDB,
                                       const std::filesystem::path& url, std::int64_t chunkFrames);

/// Stereo with its channels exchanged; anything else as it is.
ORVANE_API void writeChannelSwappedWAV(const PCMBuffer& source, const std::filesystem::path& url,
                                       std::int64_t chunkFrames);

/// One channel of the source. A channel that it has not got is an invalid range.
ORVANE_API void writeMonoChannelWAV(const PCMBuffer& source, std::int64_t channel,
                                    const std::filesystem::path& url, std::int64_t chunkFrames);

// These three are no limiters. They apply one gain to the whole, the one asked for or, where the
// true peak would exceed the ceiling then, the one that brings it there. Samples that are not
// finite become 0.

/// The gain asked for brings the integrated loudness, measured with the weights of the source's
/// layout, to the target; it is 1 for silence.
ORVANE_API void writeNormalizedWAV(const PCMBuffer& source, double targetLUFS, double ceilingDB,
                                   const std::filesystem::path& url, std::int64_t chunkFrames);

/// The gain asked for is 1.
ORVANE_API void writeLimitedWAV(const PCMBuffer& source, double ceilingDBTP,
                                const std::filesystem::path& url, std::int64_t chunkFrames);

ORVANE_API void writeGainLimitedWAV(const PCMBuffer& source, double gainDB, double ceilingDB,
                                    const std::filesystem::path& url, std::int64_t chunkFrames);

}  // namespace orvane::EditOperations
