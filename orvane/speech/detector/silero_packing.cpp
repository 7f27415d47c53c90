#include <algorithm>
#include <cmath>
#include <new>
#include <numbers>

#include "orvane/speech/detector/silero_layout.h"

namespace orvane::silero {
namespace {

/// Published bases differ from the formula by less than 1e-7, which is their rounding.
constexpr double kBasisTolerance = 1e-6;

AlignedFloats zeros(std::size_t count) {
  auto memory = allocateFloats(count);
  std::fill_n(memory.get(), count, 0.0F);
  return memory;
}

/// w[n] of the periodic Hann window.
double hann(std::size_t n) {
  return 0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(n) / kFrameSamples);
}

std::array<float, 2> rotation(std::size_t numerator, std::size_t denominator) {
  const double angle =
      -2 * std::numbers::pi * static_cast<double>(numerator) / static_cast<double>(denominator);
  return {static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle))};
}

FourierTables makeFourierTables() {
  FourierTables tables;
  for (std::size_t n = 0; n < kFrameSamples; ++n)
    tables.window[n] = static_cast<float>(0.5 * hann(n));
  for (std::size_t j = 1; j <= 3; ++j) {
    for (std::size_t n = 0; n < tables.first.size(); ++n)
      tables.first[n][j - 1] = rotation(n * j, 128);
    for (std::size_t n = 0; n < tables.second.size(); ++n)
      tables.second[n][j - 1] = rotation(n * j, 32);
  }
  for (std::size_t k = 0; k < tables.split.size(); ++k) tables.split[k] = rotation(k, 256);
  return tables;
}

bool isWindowedFourierBasis(const std::vector<float>& basis) {
  for (std::size_t k = 0; k < kBinCount; ++k) {
    for (std::size_t n = 0; n < kFrameSamples; ++n) {
      const auto turn = static_cast<double>(k * n % kFrameSamples) / kFrameSamples;
      const double real = hann(n) * std::cos(2 * std::numbers::pi * turn);
      const double imaginary = -hann(n) * std::sin(2 * std::numbers::pi * turn);
      const double storedReal = basis[k * kFrameSamples + n];
      const double storedImaginary = basis[(kBinCount + k) * kFrameSamples + n];
      if (std::abs(storedReal - real) > kBasisTolerance ||
          std::abs(storedImaginary - imaginary) > kBasisTolerance)
        return false;
    }
  }
  return true;
}

/// `weights` are stored [output][input][tap]; an absent bias is zero.
DenseLayer packDense(const std::vector<float>& weights, const std::vector<float>& bias,
                     std::size_t outputs, std::size_t inputs, std::size_t taps) {
  const std::size_t groups = (outputs + kRowGroup - 1) / kRowGroup;
  DenseLayer layer{.inputCount = inputs,
                   .outputCount = groups * kRowGroup,
                   .tapCount = taps,
                   .weights = zeros(groups * taps * inputs * kRowGroup),
                   .bias = zeros(groups * kRowGroup)};
  for (std::size_t o = 0; o < outputs; ++o)
    for (std::size_t i = 0; i < inputs; ++i)
      for (std::size_t t = 0; t < taps; ++t)
        layer.weights[(((o / kRowGroup) * taps + t) * inputs + i) * kRowGroup + o % kRowGroup] =
            weights[(o * inputs + i) * taps + t];
  std::copy(bias.begin(), bias.end(), layer.bias.get());
  return layer;
}

/// Place of a gate row in memory that holds `width` floats per row.
std::size_t gatePlace(std::size_t gate, std::size_t unit, std::size_t column, std::size_t width) {
  return ((unit / kUnitGroup * width + column) * 4 + gate) * kUnitGroup + unit % kUnitGroup;
}

/// `weights` are stored [gate × unit][input].
AlignedFloats packGates(const std::vector<float>& weights) {
  auto packed = zeros(kGateSize * kHiddenSize);
  for (std::size_t gate = 0; gate < 4; ++gate)
    for (std::size_t unit = 0; unit < kHiddenSize; ++unit)
      for (std::size_t input = 0; input < kHiddenSize; ++input)
        packed[gatePlace(gate, unit, input, kHiddenSize)] =
            weights[(gate * kHiddenSize + unit) * kHiddenSize + input];
  return packed;
}

}  // namespace

TileScratch::TileScratch()
    : samples(zeros(kTileSamples)),
      windows(zeros(kPaddedSamples * kTileSteps)),
      spectrum(zeros(kFrameCount * kBinCount * kTileSteps)),
      transform(zeros((2 * kBinCount + kRowGroup) * kTileSteps)) {}

AlignedFloats allocateFloats(std::size_t count) {
  constexpr std::size_t kAlignment = 128;  // two cache lines
  const std::size_t bytes = (count * sizeof(float) + kAlignment) / kAlignment * kAlignment;
  AlignedFloats memory(static_cast<float*>(std::aligned_alloc(kAlignment, bytes)));
  if (!memory) throw std::bad_alloc();
  return memory;
}

PackedWeights packWeights(const SileroWeights& weights) {
  using enum SileroTensor;
  PackedWeights packed;
  packed.usesFourierTransform = isWindowedFourierBasis(weights[stftBasis]);
  packed.fourier = makeFourierTables();
  if (!packed.usesFourierTransform)
    packed.basis = packDense(weights[stftBasis], {}, 2 * kBinCount, kFrameSamples, 1);
  packed.encoder[0] =
      packDense(weights[encoder0Weight], weights[encoder0Bias], 128, kBinCount, kTapCount);
  packed.encoder[1] = packDense(weights[encoder1Weight], weights[encoder1Bias], 64, 128, kTapCount);
  packed.encoder[2] = packDense(weights[encoder2Weight], weights[encoder2Bias], 64, 64, kTapCount);
  packed.encoder[3] = packDense(weights[encoder3Weight], weights[encoder3Bias], 128, 64, kTapCount);
  packed.inputWeights = packGates(weights[inputWeight]);
  packed.recurrentWeights = packGates(weights[recurrentWeight]);
  packed.gateBias = zeros(kGateSize);
  for (std::size_t gate = 0; gate < 4; ++gate)
    for (std::size_t unit = 0; unit < kHiddenSize; ++unit)
      packed.gateBias[gatePlace(gate, unit, 0, 1)] =
          weights[inputBias][gate * kHiddenSize + unit] +
          weights[recurrentBias][gate * kHiddenSize + unit];
  packed.headWeights = zeros(kHiddenSize);
  std::copy(weights[headWeight].begin(), weights[headWeight].end(), packed.headWeights.get());
  packed.headBias = weights[headBias][0];
  return packed;
}

}  // namespace orvane::silero
