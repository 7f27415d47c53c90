#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::core {

/// Loudness at the end of one 100 ms step, in LUFS; minus infinity for silence.
struct LoudnessHistoryEntry {
  float momentary = 0;   ///< the highest 400 ms value met inside the step, at 10 ms resolution
  float shortTerm = 0;   ///< the 3 s that end with the step
  float integrated = 0;  ///< the gated programme loudness up to here

  bool operator==(const LoudnessHistoryEntry&) const = default;
};

/// The loudness meter: ITU-R BS.1770-5 programme loudness and true peak, EBU Tech 3341 momentary
/// and short-term loudness, EBU Tech 3342 loudness range, and loudness of the speech in a
/// programme.
///
/// Offer the audio in order, in pieces of any size, to `process` and (in any order relative to it)
/// to `updateTruePeak`; then call `flushPartialBlock()` once; then read the figures. The figures do
/// not depend on how the audio was cut: to 1e-9 LU for loudness, exactly for peaks. `process` and
/// `updateTruePeak` touch separate state and may run on two threads at once.
///
/// Non-finite samples count as 0. At rates outside 8 … 768 kHz there is no loudness: minus
/// infinity, a range of 0, no history, and the true peak is the sample peak.
class ORVANE_API LoudnessProcessor {
 public:
  /// `precomputedSpeechHistory`: one flag per 100 ms; flag k belongs to the gating block that
  /// starts at k × 0.1 s. `weights`: one per channel, 0 leaves a channel out; without them the
  /// customary ones for that number of channels (`ChannelOrder::defaultWeights`).
  LoudnessProcessor(double sampleRate, std::uint32_t channelCount,
                    std::optional<std::vector<bool>> precomputedSpeechHistory = std::nullopt,
                    std::optional<std::vector<float>> weights = std::nullopt);
  ~LoudnessProcessor();
  LoudnessProcessor(LoudnessProcessor&&) noexcept;
  LoudnessProcessor& operator=(LoudnessProcessor&&) noexcept;

  /// Whether `history()` is kept.
  bool isRecording = false;

  /// The next piece; `channelData`: each channel's first sample of it.
  void process(PlanarView audio);
  void process(std::span<const float* const> channelData, std::size_t frameCount) {
    process({channelData, frameCount});
  }
  void updateTruePeak(PlanarView audio);
  void updateTruePeak(std::span<const float* const> channelData, std::size_t frameCount) {
    updateTruePeak({channelData, frameCount});
  }

  /// Ends the programme: measures the trailing partial step and the true-peak filter's tail.
  void flushPartialBlock();

  /// Speech flags that became known after the audio was measured; replaces those given before.
  void setSpeechHistory(std::optional<std::vector<bool>> speechHistory);

  /// One entry per step, a trailing partial step included. Empty unless recording.
  std::vector<LoudnessHistoryEntry> history() const;

  /// Weighted channel sum of mean squares of each gating block (400 ms, one per step), in order.
  const std::vector<double>& blockPowers() const noexcept;

  /// Gated programme loudness, LUFS. A programme below 400 ms is one block of its own length.
  float integratedLUFS() const;
  /// LU; 0 when the programme has no whole 3 s window.
  float loudnessRange() const;
  /// Energy mean of the speech blocks above −70 LUFS, without a relative gate; minus infinity
  /// without a speech history or without such blocks.
  float speechGatedLUFS() const;
  /// Share of true flags in the speech history, 0 … 100; 0 without one.
  float speechPercentage() const;

  /// Highest over all channels, dBTP. Interpolated ×4 below 96 kHz, ×2 below 192 kHz (BS.1770-5,
  /// Annex 2), never below the sample peak. Minus infinity for silence.
  float truePeakDB() const;
  /// The same per channel.
  std::vector<float> channelTruePeaksDB() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace orvane::core
