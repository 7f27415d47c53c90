// make_programme FILE SECONDS [SEED]: a stereo programme, 48 kHz, 24 bits, as a WAVE file.
// Music-like: seeded, dynamic, with transients. A shorter programme is the beginning of a longer
// one.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/signals.h"

namespace {

constexpr std::uint32_t kSampleRate = 48000;
constexpr std::uint32_t kChannels = 2;
constexpr std::uint32_t kBytesPerFrame = 3 * kChannels;
constexpr double kPieceSeconds = 10;

void append(std::string& bytes, std::uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

std::string header(std::uint32_t dataBytes) {
  std::string bytes = "RIFF";
  append(bytes, dataBytes + 36, 4);
  bytes += "WAVEfmt ";
  append(bytes, 16, 4);
  append(bytes, 1, 2);
  append(bytes, kChannels, 2);
  append(bytes, kSampleRate, 4);
  append(bytes, kSampleRate * kBytesPerFrame, 4);
  append(bytes, kBytesPerFrame, 2);
  append(bytes, 24, 2);
  bytes += "data";
  append(bytes, dataBytes, 4);
  return bytes;
}

std::string encoded(const orvane::test::Programme& piece, std::size_t frames) {
  std::string bytes;
  bytes.reserve(frames * kBytesPerFrame);
  for (std::size_t n = 0; n < frames; ++n)
    for (const auto& channel : piece.channels) {
      const double clipped = std::clamp(static_cast<double>(channel[n]), -1.0, 1.0);
      append(bytes, static_cast<std::uint32_t>(std::lround(clipped * 8388607.0)), 3);
    }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  const long seconds = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 0;
  if (argc > 4 || seconds < 1 || seconds > 14000) {
    std::fputs("usage: make_programme FILE SECONDS (1 to 14000) [SEED]\n", stderr);
    return 2;
  }
  const std::size_t frames = static_cast<std::size_t>(seconds) * kSampleRate;
  std::ofstream file(argv[1], std::ios::binary);
  file << header(static_cast<std::uint32_t>(frames * kBytesPerFrame));
  std::size_t written = 0;
  for (std::uint64_t seed = argc > 3 ? std::strtoul(argv[3], nullptr, 10) : 1; written < frames;
       ++seed) {
    const auto piece = orvane::test::music(seed, kSampleRate, kChannels, kPieceSeconds);
    const std::size_t count = std::min(piece.frameCount(), frames - written);
    file << encoded(piece, count);
    written += count;
  }
  file.close();
  if (!file) {
    std::fprintf(stderr, "cannot write %s\n", argv[1]);
    return 1;
  }
  return 0;
}
