#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane::core {

/// What a test signal is. How each one is made stands in docs/generator.md.
enum class GeneratorWaveform {
  sine,
  dualTone,  ///< two sines, for intermodulation
  square,    ///< this, saw and triangle without a partial at or above half the sample rate
  saw,       ///< rising
  triangle,
  linearSweep,       ///< equal steps of frequency in equal times
  logarithmicSweep,  ///< equal musical intervals in equal times
  whiteNoise,
  pinkNoise,   ///< equal power per octave, from 10 Hz on
  brownNoise,  ///< 3 dB less from one octave to the next, from 10 Hz on
  impulse,     ///< the first frame, silence behind it
  clickTrain,
  silence,
  channelIdent,  ///< channel 1 gives one burst of tone, then channel 2 gives two, and so on
};

/// How the samples of a written signal are stored.
enum class GeneratorBitDepth { int16, int24, float32 };

/// What kind of file a signal is written to.
enum class GeneratorContainer { wav, aiff, caf };

/// A specification that cannot be rendered. The description says what is wrong with which field.
class ORVANE_API GeneratorSpecError : public Error {
 public:
  GeneratorSpecError(std::string_view field, std::string description);
  ~GeneratorSpecError() override;

  /// The name that the field has in `GeneratorSpec`.
  const std::string& field() const noexcept { return field_; }

 private:
  std::string field_;
};

/// A test signal as it is asked for. Fields that the waveform has no use for are not looked at.
struct GeneratorSpec {
  GeneratorWaveform waveform = GeneratorWaveform::sine;
  /// Hz: of the tone, of the repetition of clicks, of the bursts of `channelIdent`, of the first
  /// tone of two.
  double frequency = 1000;
  double secondFrequency = 7000;  ///< Hz, of the second tone of two
  double secondLevelDB = 0;       ///< of the second tone, relative to the first
  double startFrequency = 20;     ///< Hz, where a sweep begins
  double endFrequency = 20'000;   ///< Hz, where it ends; below the start for a falling one
  /// The highest point of the waveform in dBFS, between the samples as well: what a true-peak meter
  /// reads. For noise the RMS level in dBFS, where a full-scale sine has −3.01.
  double levelDB = -20;
  double durationSeconds = 10;
  std::uint32_t channelCount = 1;
  /// Degrees by which each channel is ahead: tones, clicks, sweeps. Empty: 0 for all.
  std::vector<double> channelPhases{};
  /// Which channels sound, the others are silent. Empty: all.
  std::vector<bool> channelMask{};
  double sampleRate = 48'000;
  GeneratorBitDepth bitDepth = GeneratorBitDepth::int24;
  GeneratorContainer container = GeneratorContainer::wav;
  std::uint64_t seed = 0;  ///< of noise; each channel has a sequence of its own

  bool operator==(const GeneratorSpec&) const = default;

  /// Throws `GeneratorSpecError` for the first field that makes the signal impossible to render. A
  /// level that clips is possible.
  ORVANE_API void validate() const;

  /// Frames of the rendered signal, the duration to the nearest one.
  ORVANE_API std::size_t frameCount() const;
  ORVANE_API bool sounds(std::size_t channel) const;
};

}  // namespace orvane::core
