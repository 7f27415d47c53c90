// The Fourier transform of the network's front end; compiled once per instruction set.

#if defined(ORVANE_SPEECH_SILERO_FOURIER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ORVANE_SPEECH_SILERO_FOURIER_INL_H_
#undef ORVANE_SPEECH_SILERO_FOURIER_INL_H_
#else
#define ORVANE_SPEECH_SILERO_FOURIER_INL_H_
#endif

#include <hwy/highway.h>

#include "orvane/speech/detector/silero_dense-inl.h"
#include "orvane/speech/detector/silero_layout.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::silero::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

/// One complex number per lane.
struct Complex {
  Vector re;
  Vector im;
};

HWY_INLINE Complex operator+(Complex a, Complex b) {
  return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}
HWY_INLINE Complex operator-(Complex a, Complex b) {
  return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}
/// a × −i.
HWY_INLINE Complex turnedRight(Complex a) {
  return {a.im, hn::Neg(a.re)};
}

HWY_INLINE Complex rotated(Complex a, const std::array<float, 2>& factor) {
  const Lanes d;
  const Vector re = hn::Set(d, factor[0]);
  const Vector im = hn::Set(d, factor[1]);
  return {hn::NegMulAdd(a.im, im, hn::Mul(a.re, re)), hn::MulAdd(a.re, im, hn::Mul(a.im, re))};
}

HWY_INLINE Complex loadComplex(const float* work, std::size_t index) {
  const Lanes d;
  return {hn::Load(d, work + 2 * index * kLanes), hn::Load(d, work + (2 * index + 1) * kLanes)};
}

HWY_INLINE void storeComplex(Complex value, float* work, std::size_t index) {
  const Lanes d;
  hn::Store(value.re, d, work + 2 * index * kLanes);
  hn::Store(value.im, d, work + (2 * index + 1) * kLanes);
}

/// Sums of a transform of four: a, b, c, d become elements 0, 1, 2, 3.
HWY_INLINE void transform4(Complex& a, Complex& b, Complex& c, Complex& d) {
  const Complex even = a + c;
  const Complex evenRest = a - c;
  const Complex odd = b + d;
  const Complex oddRest = turnedRight(b - d);
  a = even + odd;
  b = evenRest + oddRest;
  c = even - odd;
  d = evenRest - oddRest;
}

using Factors = std::array<std::array<float, 2>, 3>;

/// One butterfly of a decimation in frequency, stored `span` elements apart from `first` on.
HWY_INLINE void storeButterfly4(Complex a, Complex b, Complex c, Complex d, const Factors& factors,
                                float* work, std::size_t first, std::size_t span) {
  transform4(a, b, c, d);
  storeComplex(a, work, first);
  storeComplex(rotated(b, factors[0]), work, first + span);
  storeComplex(rotated(c, factors[1]), work, first + 2 * span);
  storeComplex(rotated(d, factors[2]), work, first + 3 * span);
}

/// A transform of eight neighbours, in place and in order.
HWY_INLINE void transform8(float* work, std::size_t first) {
  const Lanes d;
  Complex e0 = loadComplex(work, first);
  Complex e1 = loadComplex(work, first + 2);
  Complex e2 = loadComplex(work, first + 4);
  Complex e3 = loadComplex(work, first + 6);
  transform4(e0, e1, e2, e3);
  Complex o0 = loadComplex(work, first + 1);
  Complex o1 = loadComplex(work, first + 3);
  Complex o2 = loadComplex(work, first + 5);
  Complex o3 = loadComplex(work, first + 7);
  transform4(o0, o1, o2, o3);
  // exp(−2πi/8) = √½ (1 − i), and its third power √½ (−1 − i).
  const Vector half = hn::Set(d, 0.70710678118654752F);
  o1 = {hn::Mul(hn::Add(o1.re, o1.im), half), hn::Mul(hn::Sub(o1.im, o1.re), half)};
  o2 = turnedRight(o2);
  o3 = {hn::Mul(hn::Sub(o3.im, o3.re), half), hn::Neg(hn::Mul(hn::Add(o3.re, o3.im), half))};
  storeComplex(e0 + o0, work, first);
  storeComplex(e1 + o1, work, first + 1);
  storeComplex(e2 + o2, work, first + 2);
  storeComplex(e3 + o3, work, first + 3);
  storeComplex(e0 - o0, work, first + 4);
  storeComplex(e1 - o1, work, first + 5);
  storeComplex(e2 - o2, work, first + 6);
  storeComplex(e3 - o3, work, first + 7);
}

HWY_INLINE Complex windowedPair(const FourierTables& tables, const float* rows, std::size_t index) {
  const Lanes d;
  const std::size_t n = 2 * index;
  return {hn::Mul(hn::Load(d, rows + n * kTileSteps), hn::Set(d, tables.window[n])),
          hn::Mul(hn::Load(d, rows + (n + 1) * kTileSteps), hn::Set(d, tables.window[n + 1]))};
}

/// Where element k of the 128-point transform lies after the three stages.
constexpr std::size_t transformPlace(std::size_t k) {
  return (k % 4) * 32 + (k / 4 % 4) * 8 + k / 16;
}

HWY_INLINE Vector magnitude(Vector re, Vector im) {
  return hn::Sqrt(hn::MulAdd(re, re, hn::Mul(im, im)));
}

/// Magnitudes of bins 0 … 128 of one frame, for the steps of one vector: `rows` are 256 rows of
/// samples, `output` 129 rows. Neighbouring samples are taken as real and imaginary part of 128
/// complex numbers z; with Z their transform, E and O those of the even and odd samples,
/// X[k] = E[k] + exp(−2πik/256) O[k], E[k] = (Z[k] + Z*[128 − k]) / 2 and
/// O[k] = −i (Z[k] − Z*[128 − k]) / 2. The halves stand in the window. `work` takes 256 vectors.
HWY_NOINLINE void fourierMagnitudes(const FourierTables& tables, const float* HWY_RESTRICT rows,
                                    float* HWY_RESTRICT work, float* HWY_RESTRICT output) {
  const Lanes d;
  for (std::size_t n = 0; n < 32; ++n)
    storeButterfly4(windowedPair(tables, rows, n), windowedPair(tables, rows, n + 32),
                    windowedPair(tables, rows, n + 64), windowedPair(tables, rows, n + 96),
                    tables.first[n], work, n, 32);
  for (std::size_t block = 0; block < 128; block += 32)
    for (std::size_t n = 0; n < 8; ++n) {
      const std::size_t at = block + n;
      storeButterfly4(loadComplex(work, at), loadComplex(work, at + 8), loadComplex(work, at + 16),
                      loadComplex(work, at + 24), tables.second[n], work, at, 8);
    }
  for (std::size_t block = 0; block < 128; block += 8) transform8(work, block);

  const Vector two = hn::Set(d, 2.0F);
  const Complex zero = loadComplex(work, transformPlace(0));
  hn::Store(hn::Abs(hn::Mul(two, hn::Add(zero.re, zero.im))), d, output);
  hn::Store(hn::Abs(hn::Mul(two, hn::Sub(zero.re, zero.im))), d, output + 128 * kTileSteps);
  for (std::size_t k = 1; k <= 64; ++k) {
    const Complex a = loadComplex(work, transformPlace(k));
    const Complex b = loadComplex(work, transformPlace(128 - k));
    const Complex even{hn::Add(a.re, b.re), hn::Sub(a.im, b.im)};
    const Complex odd = rotated({hn::Add(a.im, b.im), hn::Sub(b.re, a.re)}, tables.split[k]);
    const Complex near = even + odd;
    const Complex far = even - odd;
    hn::Store(magnitude(near.re, near.im), d, output + k * kTileSteps);
    hn::Store(magnitude(far.re, far.im), d, output + (128 - k) * kTileSteps);
  }
}

}  // namespace orvane::silero::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
