#pragma once

namespace orvane {

/// Loudness at one point of time; one point per 100 ms, stamped with the end of its block.
struct LoudnessCurvePoint {
  double time = 0;       ///< seconds
  float momentary = 0;   ///< LUFS; minus infinity before anything audible
  float shortTerm = 0;   ///< LUFS
  float integrated = 0;  ///< LUFS, the gated value up to here

  bool operator==(const LoudnessCurvePoint&) const = default;
};

/// Stereo correlation of one 100 ms window, stamped with its end.
struct StereoWidthCurvePoint {
  double time = 0;        ///< seconds
  float correlation = 0;  ///< −1 … +1

  bool operator==(const StereoWidthCurvePoint&) const = default;
};

}  // namespace orvane
