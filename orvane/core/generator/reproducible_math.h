#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <utility>

/// Functions that give the same bits everywhere. Those of the C library differ in the last place
/// from one version and instruction set to another; these consist of nothing but operations that
/// IEEE 754 rounds exactly. Their error is a few units in the last place.
namespace orvane::core::ReproducibleMath {

namespace detail {

/// 1 ÷ k! for k = first, first + step …, with alternating signs if wanted.
template <std::size_t count>
constexpr std::array<double, count> taylor(int first, int step, bool alternates) {
  std::array<double, count> coefficients{};
  double factorial = 1, sign = 1;
  int k = 0;
  for (std::size_t i = 0; i < count; ++i) {
    for (const int next = first + static_cast<int>(i) * step; k < next;) factorial *= ++k;
    coefficients[i] = sign / factorial;
    if (alternates) sign = -sign;
  }
  return coefficients;
}

/// The polynomial with these coefficients, from the constant on, by Horner's rule.
template <std::size_t count>
double polynomial(const std::array<double, count>& coefficients, double x) noexcept {
  double sum = 0;
  [&]<std::size_t... i>(std::index_sequence<i...>) {
    ((sum = sum * x + coefficients[count - 1 - i]), ...);
  }
  (std::make_index_sequence<count>());
  return sum;
}

}  // namespace detail

/// A place within a period in units of 2^-64 of it. Sums and multiples wrap by themselves and are
/// exact, so that an oscillator neither drifts nor jumps, however long it runs.
using Phase = std::uint64_t;

/// Of any finite number of periods.
inline Phase phaseOfTurns(double turns) noexcept {
  const double fraction = turns - std::floor(turns);
  return fraction < 1 ? static_cast<Phase>(fraction * 0x1p64) : 0;
}

/// sin(2π · phase).
inline double sine(Phase phase) noexcept {
  // The first term left out is below 5e-17 on an eighth of a period to either side of a quarter.
  static constexpr auto kOdd = detail::taylor<8>(1, 2, true);
  static constexpr auto kEven = detail::taylor<9>(0, 2, true);
  const Phase quarter = (phase + (Phase{1} << 61)) >> 62;
  const auto rest = static_cast<std::int64_t>(phase - (quarter << 62));
  const double x = static_cast<double>(rest) * (2 * std::numbers::pi * 0x1p-64);
  const double odd = x * detail::polynomial(kOdd, x * x);
  const double even = detail::polynomial(kEven, x * x);
  const double value = (quarter & 1) != 0 ? even : odd;
  return (quarter & 2) != 0 ? -value : value;
}

inline double cosine(Phase phase) noexcept {
  return sine(phase + (Phase{1} << 62));
}

/// 2^x, for x from −1000 to 1000.
inline double exp2(double x) noexcept {
  // Of e^y; |y| is at most 0.35, the first term left out below 5e-18.
  static constexpr auto kExponential = detail::taylor<14>(0, 1, false);
  const double whole = std::floor(x + 0.5);
  const double y = (x - whole) * std::numbers::ln2;
  return std::ldexp(detail::polynomial(kExponential, y), static_cast<int>(whole));
}

/// Of a number above 0.
inline double log2(double x) noexcept {
  // Of artanh(z) ÷ z, by z²; |z| is at most 0.172, the first term left out below 3e-17.
  static constexpr std::array<double, 10> kArtanh = {
      1, 1.0 / 3, 1.0 / 5, 1.0 / 7, 1.0 / 9, 1.0 / 11, 1.0 / 13, 1.0 / 15, 1.0 / 17, 1.0 / 19};
  int exponent = 0;
  double mantissa = std::frexp(x, &exponent);
  if (mantissa < std::numbers::sqrt2 / 2) {
    mantissa *= 2;
    --exponent;
  }
  // ln(m) = 2 artanh((m − 1) ÷ (m + 1)).
  const double z = (mantissa - 1) / (mantissa + 1);
  return exponent + 2 * z * detail::polynomial(kArtanh, z * z) / std::numbers::ln2;
}

/// The amplitude of a level.
inline double amplitudeOfDB(double decibels) noexcept {
  constexpr double kLog2Of10 = std::numbers::ln10 / std::numbers::ln2;
  return exp2(decibels / 20 * kLog2Of10);
}

}  // namespace orvane::core::ReproducibleMath
