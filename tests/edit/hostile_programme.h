#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include "tests/support/programme.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"

namespace orvane::test {

/// Audio that overshoots between its samples in every way that is known to defeat a limiter. Most
/// of it is far above full scale, and breaks off where it is high.
inline std::vector<float> hostileChannel(Random& random, std::uint32_t sampleRate,
                                         std::size_t frames) {
  const auto amplitude = static_cast<float>(std::pow(10.0, random.between(-0.5, 1.0)));
  std::vector<float> samples(frames);
  switch (random.below(7)) {
    case 0: {  // a tone that ends on its crest
      const double step = 2 * std::numbers::pi * random.between(40, 0.49 * sampleRate) / sampleRate;
      for (std::size_t i = 0; i < frames; ++i)
        samples[i] =
            amplitude * static_cast<float>(std::cos(step * static_cast<double>(frames - 1 - i)));
      return samples;
    }
    case 1:
      return whiteNoise(random.next(), frames, amplitude);
    case 2:
      samples = noiseBursts(random.next(), sampleRate, frames);
      overdrive(samples, amplitude);
      return samples;
    case 3: {  // crests between the samples: a quarter of the rate, an eighth of a turn late
      const double detune = random.between(0.249, 0.251);
      for (std::size_t i = 0; i < frames; ++i)
        samples[i] =
            amplitude * static_cast<float>(std::sin(2 * std::numbers::pi *
                                                    (detune * static_cast<double>(i) + 0.125)));
      return samples;
    }
    case 4:  // single samples, pairs and triples in silence
      for (std::size_t i = 0; i < frames; i += 1 + random.below(900))
        for (std::uint64_t k = 0; k <= random.below(3) && i + k < frames; ++k)
          samples[i + k] = random.below(2) == 0 ? amplitude : -amplitude;
      samples.back() = amplitude;
      return samples;
    case 5:  // signs that no band-limited signal has
      for (float& x : samples) x = random.below(2) == 0 ? amplitude : -amplitude;
      return samples;
    default: {  // levels that jump
      float level = 1;
      for (std::size_t i = 0; i < frames; ++i) {
        if (random.below(700) == 0)
          level = amplitude * static_cast<float>(std::pow(10.0, random.between(-3, 0)));
        samples[i] = level * static_cast<float>(random.between(-1, 1));
      }
      return samples;
    }
  }
}

/// A programme of a seed: one to three channels, of a few samples or of up to a quarter of a
/// second, one in four with samples that are no numbers.
inline Programme hostileProgramme(std::uint64_t seed, std::uint32_t sampleRate) {
  Random random(seed);
  const std::size_t frames =
      seed % 5 == 0 ? 1 + random.below(40) : 1000 + random.below(sampleRate / 4);
  Programme programme{static_cast<double>(sampleRate), {}};
  for (std::size_t c = 0; c < 1 + seed % 3; ++c)
    programme.channels.push_back(hostileChannel(random, sampleRate, frames));
  if (seed % 4 == 0)
    for (const float wild :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity()})
      programme.channels[random.below(programme.channels.size())][random.below(frames)] = wild;
  return programme;
}

}  // namespace orvane::test
