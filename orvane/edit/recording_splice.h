#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "orvane/edit/edit_result.h"
#include "orvane/edit/frame_map.h"
#include "orvane/platform/export.h"

/// Joins a new take to a recording, with a short equal-power crossfade at each seam. Base and take
/// are whole channels in memory: those of unequal length and a rate that is no number are
/// programming errors.
namespace orvane::RecordingSplice {

using EditOperations::ChannelArrays;
using EditOperations::EditResult;

// The splices take a take at the base's rate. Where base or take has no channels, the take no
// frames or other channels than the base, they give the base unchanged. A crossfade is as long as
// there is audio on both sides; a take too short for two gets the one in front of it.

/// The take behind the end of the base.
ORVANE_API EditResult appendSplice(ChannelArrays base, const ChannelArrays& take,
                                   std::int64_t crossfadeFrames, double sampleRate);

/// The take between two frames of the base, before `atFrame`; one outside of the base is its nearer
/// end. Around it the base is as long as the crossfades shorter.
ORVANE_API EditResult insertSplice(ChannelArrays base, std::int64_t atFrame,
                                   const ChannelArrays& take, std::int64_t crossfadeFrames,
                                   double sampleRate);

/// The take in place of the frames [startFrame, endFrame), cut to what is there; the base unchanged
/// where nothing is.
ORVANE_API EditResult replaceSplice(ChannelArrays base, std::int64_t startFrame,
                                    std::int64_t endFrame, const ChannelArrays& take,
                                    std::int64_t crossfadeFrames, double sampleRate);

// Where a splice of a take of `takeFrames` frames puts the frames of a base of `frameCount`.
ORVANE_API FrameMap appendMap(std::int64_t frameCount, std::int64_t takeFrames,
                              std::int64_t crossfadeFrames);
ORVANE_API FrameMap insertMap(std::int64_t frameCount, std::int64_t atFrame,
                              std::int64_t takeFrames, std::int64_t crossfadeFrames);
ORVANE_API FrameMap replaceMap(std::int64_t frameCount, std::int64_t startFrame,
                               std::int64_t endFrame, std::int64_t takeFrames,
                               std::int64_t crossfadeFrames);

struct Take {
  ChannelArrays channelData{};  ///< in canonical order
  double sampleRate = 0;        ///< hertz
};

/// Reads a file of any kind that Orvane reads; absent when it cannot be read.
ORVANE_API std::optional<Take> readTake(const std::filesystem::path& url);

/// The take with so many channels: mono on each of them, stereo averaged to mono; samples that are
/// not finite become 0. Absent for any other change of their number, for a take without channels
/// and for one whose channels differ in length.
ORVANE_API std::optional<ChannelArrays> conformChannels(ChannelArrays take, int channelCount);

/// The take at another rate, round(n × to ÷ from) frames long: band-limited, linear phase, without
/// delay. Equal rates give it bit for bit. Absent for a take without frames or with channels of
/// unequal length, for rates that are not finite and above 0 or lie more than 4,096 times apart,
/// and when the memory cannot be had. Samples that are not finite spoil their surroundings:
/// conform first.
ORVANE_API std::optional<ChannelArrays> resampleTake(ChannelArrays take, double fromRate,
                                                     double toRate);

/// When take files that were kept may be cleaned up.
namespace TakeRetention {

/// Whether a file was last modified more than 7 days before `now`.
ORVANE_API bool isStale(std::chrono::system_clock::time_point modified,
                        std::chrono::system_clock::time_point now) noexcept;

}  // namespace TakeRetention
}  // namespace orvane::RecordingSplice
