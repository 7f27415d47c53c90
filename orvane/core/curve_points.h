#pragma once

#include "orvane/platform/export.h"

namespace orvane {

/// Loudness at one point of time; one point per 100 ms, stamped with the end of its block.
/// Has a JSON form.
struct ORVANE_API LoudnessCurvePoint {
  double time = 0;       ///< seconds
  float momentary = 0;   ///< LUFS; minus infinity before anything audible
  float shortTerm = 0;   ///< LUFS
  float integrated = 0;  ///< LUFS, the gated value up to here

  bool operator==(const LoudnessCurvePoint&) const = default;
};

/// Stereo correlation of one 100 ms window, stamped with its end. Has a JSON form.
struct ORVANE_API StereoWidthCurvePoint {
  double time = 0;        ///< seconds
  float correlation = 0;  ///< −1 … +1

  bool operator==(const StereoWidthCurvePoint&) const = default;
};

}  // namespace orvane
