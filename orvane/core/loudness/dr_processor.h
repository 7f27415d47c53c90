#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "orvane/platform/export.h"

/// The DR score: how far the loudest passages stay below the peaks ("Measuring DR", v1.3, 2009).
///
/// Per channel: blocks of 3 s (132,480 frames at 44.1 kHz), the last one with its own length;
/// RMS of a block = √(2·Σx²/n); DR = −20·log10(energy mean of the loudest fifth of the blocks ÷ the
/// second-highest block peak). The score is the mean over the channels, rounded, halves away from
/// zero. Silence scores 0.
namespace orvane::core::DRProcessor {

/// What is needed of one block of one channel.
struct Block {
  double meanSquare = 0;  ///< Σx² ÷ n
  float peak = 0;         ///< largest magnitude

  bool operator==(const Block&) const = default;
};

/// Frames of a whole block at that rate; at least 1.
ORVANE_API std::size_t blockFrames(double sampleRate) noexcept;

/// Unrounded DR of one channel, in dB; 0 for silence, for no blocks and where it is not a number.
ORVANE_API double channelDR(std::span<const Block> blocks);

/// The score of a programme from its channels' values.
ORVANE_API std::int64_t score(std::span<const double> channelValues) noexcept;

/// One unrounded value per channel.
ORVANE_API std::vector<double> computeChannelDR(std::span<const float* const> channelData,
                                                std::size_t channelCount, std::size_t frameCount,
                                                double sampleRate);

/// The programme's score.
ORVANE_API std::int64_t computeDR(std::span<const float* const> channelData,
                                  std::size_t channelCount, std::size_t frameCount,
                                  double sampleRate);

}  // namespace orvane::core::DRProcessor
