#pragma once

#include "orvane/container/broadcast_loudness.h"
#include "orvane/edit/sliced_audio.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/platform/sample_encoding.h"

namespace orvane {

/// How loud audio is, as one looks at it before and after an edit. Minus infinity for silence.
struct ProgrammeLevels {
  float integratedLUFS = 0;
  float truePeakDB = 0;  ///< dBTP

  bool operator==(const ProgrammeLevels&) const = default;
};

/// Measures with the weights of the audio's layout; the stage is "Measuring". Throws `Cancelled`
/// when the observer asks for it.
ORVANE_API ProgrammeLevels measureLevels(const PCMBuffer& audio, const Execution& execution = {});

/// What a broadcast extension states of audio of that format which is stored so: what measuring the
/// file gives, clipped samples and all. The stage is "Measuring". Throws `Cancelled`.
ORVANE_API BroadcastLoudness measureBroadcastLoudness(const SlicedAudio& audio,
                                                      const AudioFormat& format,
                                                      SampleEncoding stored,
                                                      const Execution& execution = {});

}  // namespace orvane
