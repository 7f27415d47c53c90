#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <span>
#include <vector>

#include "orvane/speech/detector/onnx_weights.h"

namespace orvane::test {

/// The network as its definition reads, one step at a time, in doubles and plain loops: the measure
/// of the vector kernels. Samples are taken as they are.
class SileroReference {
 public:
  explicit SileroReference(const SileroWeights& weights) : weights_(weights) {}

  /// The probability of the next step of 512 samples.
  double step(std::span<const float> samples) {
    std::vector<double> padded(context_.begin(), context_.end());
    padded.insert(padded.end(), samples.begin(), samples.end());
    std::copy(padded.end() - 64, padded.end(), context_.begin());
    for (std::size_t i = 0; i < 64; ++i) padded.push_back(padded[574 - i]);

    Signal x = magnitudes(padded);
    x = convolution(x, SileroTensor::encoder0Weight, SileroTensor::encoder0Bias, 1);
    x = convolution(x, SileroTensor::encoder1Weight, SileroTensor::encoder1Bias, 2);
    x = convolution(x, SileroTensor::encoder2Weight, SileroTensor::encoder2Bias, 2);
    x = convolution(x, SileroTensor::encoder3Weight, SileroTensor::encoder3Bias, 1);
    recur(x);
    double sum = weights_[SileroTensor::headBias][0];
    for (std::size_t j = 0; j < 128; ++j)
      sum += weights_[SileroTensor::headWeight][j] * std::max(hidden_[j], 0.0);
    return logistic(sum);
  }

  /// All whole steps of a signal.
  std::vector<double> run(std::span<const float> samples) {
    std::vector<double> result;
    for (std::size_t i = 0; i + 512 <= samples.size(); i += 512)
      result.push_back(step(samples.subspan(i, 512)));
    return result;
  }

 private:
  using Signal = std::vector<std::vector<double>>;  ///< [channel][time]

  static double logistic(double x) { return 1 / (1 + std::exp(-x)); }

  Signal magnitudes(const std::vector<double>& padded) const {
    const auto& basis = weights_[SileroTensor::stftBasis];
    Signal result(129, std::vector<double>(4));
    for (std::size_t k = 0; k < 129; ++k)
      for (std::size_t frame = 0; frame < 4; ++frame) {
        double re = 0;
        double im = 0;
        for (std::size_t n = 0; n < 256; ++n) {
          re += basis[k * 256 + n] * padded[frame * 128 + n];
          im += basis[(129 + k) * 256 + n] * padded[frame * 128 + n];
        }
        result[k][frame] = std::sqrt(re * re + im * im);
      }
    return result;
  }

  Signal convolution(const Signal& input, SileroTensor weightTensor, SileroTensor biasTensor,
                     std::size_t stride) const {
    const auto& weight = weights_[weightTensor];
    const auto& bias = weights_[biasTensor];
    const std::size_t length = input[0].size();
    Signal result(bias.size(), std::vector<double>((length - 1) / stride + 1));
    for (std::size_t o = 0; o < result.size(); ++o)
      for (std::size_t t = 0; t < result[o].size(); ++t) {
        double sum = bias[o];
        for (std::size_t i = 0; i < input.size(); ++i)
          for (std::size_t tap = 0; tap < 3; ++tap) {
            const std::size_t at = t * stride + tap;  // one further than in the input
            if (at >= 1 && at <= length)
              sum += weight[(o * input.size() + i) * 3 + tap] * input[i][at - 1];
          }
        result[o][t] = std::max(sum, 0.0);
      }
    return result;
  }

  void recur(const Signal& x) {
    std::array<double, 512> gates{};
    for (std::size_t row = 0; row < 512; ++row) {
      gates[row] = static_cast<double>(weights_[SileroTensor::inputBias][row]) +
                   weights_[SileroTensor::recurrentBias][row];
      for (std::size_t j = 0; j < 128; ++j)
        gates[row] += weights_[SileroTensor::inputWeight][row * 128 + j] * x[j][0] +
                      weights_[SileroTensor::recurrentWeight][row * 128 + j] * hidden_[j];
    }
    for (std::size_t j = 0; j < 128; ++j) {
      cell_[j] =
          logistic(gates[128 + j]) * cell_[j] + logistic(gates[j]) * std::tanh(gates[256 + j]);
      hidden_[j] = logistic(gates[384 + j]) * std::tanh(cell_[j]);
    }
  }

  const SileroWeights& weights_;
  std::array<double, 64> context_{};
  std::array<double, 128> hidden_{};
  std::array<double, 128> cell_{};
};

}  // namespace orvane::test
