#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "orvane/edit/edit_result.h"
#include "orvane/edit/frame_range.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::EditOperations {

/// The frames of a block: 100 ms, the nearest number of frames, at least one.
ORVANE_API std::int64_t speechBlockFrames(double sampleRate);

/// A flag per block of a programme of so many frames, true where any of these frames lies in it.
ORVANE_API std::vector<bool> speechBlocks(std::span<const FrameRange> speech,
                                          std::int64_t frameCount, std::int64_t blockFrames);

/// How what is not speech is lowered.
struct NonSpeechExpansion {
  double reductionDB = 0;  ///< of non-speech against speech, negative; above 0 it counts as 0
  double makeupDB = 0;     ///< of everything
  double attackMs = 50;    ///< time constant back to speech, 0.1 ms at least
  double releaseMs = 300;  ///< time constant into non-speech, 0.1 ms at least

  bool operator==(const NonSpeechExpansion&) const = default;
};

/// Multiplies a programme that comes in slices by a gain that tends to `makeupDB` in blocks of
/// speech and to `reductionDB` below it elsewhere, and begins at what its first block asks for.
/// `speechMask` has a flag per block of `blockFrames` frames; behind it there is no speech. An
/// empty mask and blocks of no frames leave the audio as it is. The gain is carried on in double.
/// Slices of any size give the same samples.
class ORVANE_API NonSpeechExpander {
 public:
  NonSpeechExpander(double sampleRate, std::vector<bool> speechMask, std::int64_t blockFrames,
                    const NonSpeechExpansion& expansion);

  void process(MutablePlanarView slice);

 private:
  double targetOf(std::int64_t block) const;
  void processPiece(MutablePlanarView piece, double target);

  std::vector<bool> speechMask_;
  std::int64_t blockFrames_;
  double speechGain_;
  double otherGain_;
  double attack_;
  double release_;
  double gain_;
  std::int64_t frame_ = 0;
};

ORVANE_API EditResult expandNonSpeech(ChannelArrays channelData, double sampleRate,
                                      const std::vector<bool>& speechMask, std::int64_t blockFrames,
                                      const NonSpeechExpansion& expansion);
ORVANE_API void expandNonSpeechInPlace(MutablePlanarView audio, double sampleRate,
                                       const std::vector<bool>& speechMask,
                                       std::int64_t blockFrames,
                                       const NonSpeechExpansion& expansion);

}  // namespace orvane::EditOperations
