#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

#include "orvane/speech/detector/onnx_weights.h"

/// The network's sizes, and its weights and working memory as the vector kernels want them.
///
/// The network sees 32 ms steps. Everything before its recurrence is independent of other steps, so
/// a tile of steps is computed at once with one step per vector lane: activations are rows of
/// `kTileSteps` floats. Weights are stored in the order in which the kernels read them.
namespace orvane::silero {

inline constexpr std::size_t kStepSamples = 512;    ///< new samples per step (32 ms at 16 kHz)
inline constexpr std::size_t kContextSamples = 64;  ///< samples repeated from before the step
inline constexpr std::size_t kWindowSamples = kStepSamples + kContextSamples;
inline constexpr std::size_t kMirrorSamples = 64;  ///< mirrored at the window's end
inline constexpr std::size_t kPaddedSamples = kWindowSamples + kMirrorSamples;
inline constexpr std::size_t kFrameSamples = 256;  ///< length of a Fourier frame
inline constexpr std::size_t kFrameHop = 128;
inline constexpr std::size_t kFrameCount = 4;  ///< Fourier frames per step
inline constexpr std::size_t kBinCount = kFrameSamples / 2 + 1;
inline constexpr std::size_t kHiddenSize = 128;
inline constexpr std::size_t kGateSize = 4 * kHiddenSize;
inline constexpr std::size_t kTapCount = 3;

/// Steps of a tile: a whole number of vectors on every machine, and three or more of the widest.
inline constexpr std::size_t kTileSteps = 48;
inline constexpr std::size_t kTileSamples = kContextSamples + kTileSteps * kStepSamples;
/// Outputs of a dense layer whose weights are interleaved.
inline constexpr std::size_t kRowGroup = 8;
/// Hidden units whose four gates are interleaved, and the gate rows of such a group.
inline constexpr std::size_t kUnitGroup = 16;
inline constexpr std::size_t kUnitGroupCount = kHiddenSize / kUnitGroup;
inline constexpr std::size_t kGroupGates = 4 * kUnitGroup;

struct FreeMemory {
  void operator()(float* memory) const noexcept { std::free(memory); }
};
/// At the beginning of a cache line, whose neighbour the processor may fetch with it.
using AlignedFloats = std::unique_ptr<float[], FreeMemory>;
AlignedFloats allocateFloats(std::size_t count);

/// A layer that maps input rows to output rows. Weight of (output, tap, input) is at
/// `[output / 8][tap][input][output % 8]`; outputs are padded to a multiple of 8 with zeros.
struct DenseLayer {
  std::size_t inputCount = 0;
  std::size_t outputCount = 0;
  std::size_t tapCount = 1;
  AlignedFloats weights{};
  AlignedFloats bias{};
};

/// Tables of the real Fourier transform of 256 points through a complex one of 128.
struct FourierTables {
  /// Half the periodic Hann window.
  std::array<float, kFrameSamples> window{};
  /// Factors (real, imaginary) exp(−2πi·n·j/128), n = 0 … 31, j = 1 … 3.
  std::array<std::array<std::array<float, 2>, 3>, 32> first{};
  /// exp(−2πi·n·j/32), n = 0 … 7, j = 1 … 3.
  std::array<std::array<std::array<float, 2>, 3>, 8> second{};
  /// exp(−2πi·k/256), k = 0 … 64.
  std::array<std::array<float, 2>, 65> split{};
};

struct PackedWeights {
  /// True when the model's basis is the windowed Fourier transform that `fourier` computes.
  bool usesFourierTransform = false;
  FourierTables fourier{};
  DenseLayer basis{};  ///< filled only when `usesFourierTransform` is false
  std::array<DenseLayer, 4> encoder{};
  /// Weight of (gate, unit, input) at `[unit / 16][input][gate][unit % 16]`; gates in the order
  /// input, forget, candidate, output.
  AlignedFloats inputWeights{};
  AlignedFloats recurrentWeights{};
  AlignedFloats gateBias{};  ///< the sum of both biases, `[unit / 16][gate][unit % 16]`
  AlignedFloats headWeights{};
  float headBias = 0;
};

/// Working memory of one thread that computes tiles.
struct TileScratch {
  TileScratch();

  AlignedFloats samples;    ///< `kTileSamples` in order of time; later the first layer's output
  AlignedFloats windows;    ///< `kPaddedSamples` rows; later the other layers' outputs
  AlignedFloats spectrum;   ///< `kFrameCount` × `kBinCount` rows of magnitudes
  AlignedFloats transform;  ///< the Fourier transform's or the basis product's own
};

/// What the recurrence carries from step to step.
struct RecurrentState {
  alignas(64) std::array<float, kHiddenSize> hidden{};
  alignas(64) std::array<float, kHiddenSize> cell{};
};

PackedWeights packWeights(const SileroWeights& weights);

/// A signal that lies in two places.
struct Signal {
  std::span<const float> first{};
  std::span<const float> second{};
};

/// Copies the samples of a tile whose steps begin with sample `start`, and the ones before them, to
/// `scratch.samples`: zeros before the signal, its last sample after it, and 0 for samples that are
/// not finite or beyond 10⁹. `start` is 0 or at least `kContextSamples`.
void loadTile(const Signal& signal, std::size_t start, TileScratch& scratch);

/// From the loaded samples to the gates' sums without their recurrent part: `gates` takes
/// `kTileSteps` × `kGateSize` floats, step by step, gates in the order of `gateBias`.
void computeTile(const PackedWeights& weights, TileScratch& scratch, float* gates);

/// Runs the recurrence over `stepCount` steps of `gates` and gives a speech probability for each.
void runRecurrence(const PackedWeights& weights, const float* gates, std::size_t stepCount,
                   RecurrentState& state, float* probabilities);

}  // namespace orvane::silero
