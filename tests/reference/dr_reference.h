#pragma once

#include <span>

namespace orvane::test::reference {

/// DR of one channel as the procedure tells it: blocks of 3 s (132,480 frames at 44.1 kHz), each
/// with its RMS (√2 above the usual) and peak; the loudest fifth against the second-highest peak.
double channelDR(std::span<const float> samples, double sampleRate);

}  // namespace orvane::test::reference
