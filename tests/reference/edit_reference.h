#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "orvane/edit/fade_curve.h"

/// The edits sample by sample, straight from their formulas in single precision.
namespace orvane::reference {

using Channel = std::vector<float>;

inline float fadeGain(std::int64_t index, std::int64_t count,
                      EditOperations::FadeDirection direction, EditOperations::FadeCurve curve) {
  using namespace EditOperations;
  const float t =
      static_cast<float>(index) / static_cast<float>(std::max<std::int64_t>(count, 2) - 1);
  const bool isIn = direction == FadeDirection::fadeIn;
  if (curve == FadeCurve::equalPower) {
    const float x = t * 3.1415925F * 0.5F;
    return isIn ? std::sin(x) : std::cos(x);
  }
  const float g = curve == FadeCurve::linear ? t : std::log10(9.0F * t + 1.0F);
  return isIn ? g : 1.0F - g;
}

inline void clamp(std::int64_t& start, std::int64_t& end, const Channel& x) {
  start = std::max<std::int64_t>(start, 0);
  end = std::min(end, static_cast<std::int64_t>(x.size()));
}

inline Channel fade(Channel x, std::int64_t start, std::int64_t end,
                    EditOperations::FadeDirection direction, EditOperations::FadeCurve curve) {
  clamp(start, end, x);
  for (std::int64_t n = start; n < end; ++n)
    x[static_cast<std::size_t>(n)] *= fadeGain(n - start, end - start, direction, curve);
  return x;
}

inline Channel changeLevel(Channel x, double gainDB, std::int64_t start, std::int64_t end) {
  clamp(start, end, x);
  const auto gain = static_cast<float>(std::pow(10.0, gainDB / 20));
  for (std::int64_t n = start; n < end; ++n) x[static_cast<std::size_t>(n)] *= gain;
  return x;
}

inline Channel trim(const Channel& x, std::int64_t start, std::int64_t end) {
  clamp(start, end, x);
  if (end <= start) return x;
  return {x.begin() + start, x.begin() + end};
}

inline Channel cut(const Channel& x, std::int64_t start, std::int64_t end,
                   std::int64_t crossfadeFrames) {
  const auto length = static_cast<std::int64_t>(x.size());
  clamp(start, end, x);
  if (end <= start || end - start >= length) return x;
  const std::int64_t xf =
      std::max<std::int64_t>(0, std::min({length - end, start, crossfadeFrames}));
  Channel out(x.begin(), x.begin() + (start - xf));
  for (std::int64_t i = 0; i < xf; ++i) {
    const float a = static_cast<float>(i) / static_cast<float>(xf) * 3.1415925F * 0.5F;
    out.push_back(x[static_cast<std::size_t>(start - xf + i)] * std::cos(a) +
                  x[static_cast<std::size_t>(end + i)] * std::sin(a));
  }
  out.insert(out.end(), x.begin() + end + xf, x.end());
  return out;
}

/// The base with the take in place of its frames [start, end), which lie within it.
inline Channel splice(const Channel& base, std::int64_t start, std::int64_t end,
                      const Channel& take, std::int64_t crossfadeFrames) {
  const auto length = static_cast<std::int64_t>(base.size());
  const auto takeLength = static_cast<std::int64_t>(take.size());
  const auto at = [](const Channel& x, std::int64_t n) { return x[static_cast<std::size_t>(n)]; };
  const auto angle = [](std::int64_t i, std::int64_t n) {
    return static_cast<float>(i) / static_cast<float>(n) * 3.1415925F * 0.5F;
  };
  const auto in = std::clamp<std::int64_t>(std::min(start, crossfadeFrames), 0, takeLength);
  const auto out =
      std::max<std::int64_t>(0, std::min(takeLength - in, std::min(length - end, crossfadeFrames)));
  Channel result;
  for (std::int64_t n = 0; n < start - in; ++n) result.push_back(at(base, n));
  for (std::int64_t i = 0; i < in; ++i)
    result.push_back(at(base, start - in + i) * std::cos(angle(i, in)) +
                     at(take, i) * std::sin(angle(i, in)));
  for (std::int64_t n = in; n < takeLength - out; ++n) result.push_back(at(take, n));
  for (std::int64_t i = 0; i < out; ++i)
    result.push_back(at(take, takeLength - out + i) * std::cos(angle(i, out)) +
                     at(base, end + i) * std::sin(angle(i, out)));
  for (std::int64_t n = end + out; n < length; ++n) result.push_back(at(base, n));
  return result;
}

}  // namespace orvane::reference
