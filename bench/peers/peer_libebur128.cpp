// peer_libebur128 FILE: what a program made of libsndfile and libebur128 measures of a file:
// highest momentary and short-term loudness, integrated loudness, range and true peak.
//
// It reads a second at a time and asks for the momentary and short-term loudness once per piece,
// ten times less often than EBU Tech 3341 wants them refreshed: the cheapest loop that still makes
// sense.
#include <ebur128.h>
#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
  SF_INFO info{};
  SNDFILE* file = argc == 2 ? sf_open(argv[1], SFM_READ, &info) : nullptr;
  if (file == nullptr) {
    std::fputs("usage: peer_libebur128 FILE\n", stderr);
    return 2;
  }
  const auto channels = static_cast<std::size_t>(info.channels);
  ebur128_state* state = ebur128_init(
      static_cast<unsigned>(info.channels), static_cast<unsigned long>(info.samplerate),
      EBUR128_MODE_M | EBUR128_MODE_S | EBUR128_MODE_I | EBUR128_MODE_LRA | EBUR128_MODE_TRUE_PEAK);
  std::vector<float> piece(static_cast<std::size_t>(info.samplerate) * channels);
  double maxMomentary = -HUGE_VAL, maxShortTerm = -HUGE_VAL;
  sf_count_t frames = 0;
  while ((frames = sf_readf_float(file, piece.data(), info.samplerate)) > 0) {
    ebur128_add_frames_float(state, piece.data(), static_cast<std::size_t>(frames));
    double level = 0;
    ebur128_loudness_momentary(state, &level);
    maxMomentary = std::max(maxMomentary, level);
    ebur128_loudness_shortterm(state, &level);
    maxShortTerm = std::max(maxShortTerm, level);
  }
  double integrated = 0, range = 0, highest = 0;
  ebur128_loudness_global(state, &integrated);
  ebur128_loudness_range(state, &range);
  for (unsigned c = 0; c < channels; ++c) {
    double peak = 0;
    ebur128_true_peak(state, c, &peak);
    highest = std::max(highest, peak);
  }
  std::printf("I %.2f LUFS  LRA %.2f LU  M %.2f  S %.2f  TP %.2f dBTP\n", integrated, range,
              maxMomentary, maxShortTerm, 20 * std::log10(highest));
  ebur128_destroy(&state);
  sf_close(file);
  return 0;
}
