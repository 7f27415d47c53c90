#include "orvane/platform/sha256.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace orvane {
namespace {

constexpr std::size_t kBlockBytes = 64;

/// FIPS 180-4, 4.2.2: of the cube roots of the first 64 primes.
constexpr std::array<std::uint32_t, 64> kRounds = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

/// 5.3.3: of the square roots of the first 8 primes.
using State = std::array<std::uint32_t, 8>;
constexpr State kStart = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                          0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

/// 6.2.2.
void addBlock(State& state, std::span<const std::byte> block) {
  std::array<std::uint32_t, 64> schedule{};
  for (std::size_t i = 0; i < kBlockBytes; ++i)
    schedule[i / 4] = schedule[i / 4] << 8 | std::to_integer<std::uint32_t>(block[i]);
  for (std::size_t t = 16; t < 64; ++t) {
    const std::uint32_t w15 = schedule[t - 15];
    const std::uint32_t w2 = schedule[t - 2];
    schedule[t] = schedule[t - 16] + schedule[t - 7] +
                  (std::rotr(w15, 7) ^ std::rotr(w15, 18) ^ w15 >> 3) +
                  (std::rotr(w2, 17) ^ std::rotr(w2, 19) ^ w2 >> 10);
  }
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t t = 0; t < 64; ++t) {
    const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                ((e & f) ^ (~e & g)) + kRounds[t] + schedule[t];
    const std::uint32_t second =
        (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + second;
  }
  const State result = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += result[i];
}

}  // namespace

std::string sha256(std::span<const std::byte> bytes) {
  State state = kStart;
  std::size_t start = 0;
  for (; bytes.size() - start >= kBlockBytes; start += kBlockBytes)
    addBlock(state, bytes.subspan(start, kBlockBytes));
  // 5.1.1: the rest, a one, zeros, and the count of bits at the end of a block.
  std::vector<std::byte> rest(bytes.begin() + static_cast<std::ptrdiff_t>(start), bytes.end());
  rest.push_back(std::byte{0x80});
  rest.resize(rest.size() > kBlockBytes - 8 ? 2 * kBlockBytes : kBlockBytes);
  for (std::size_t i = 0; i < 8; ++i)
    rest[rest.size() - 1 - i] = std::byte(static_cast<std::uint64_t>(bytes.size()) * 8 >> 8 * i);
  for (start = 0; start < rest.size(); start += kBlockBytes)
    addBlock(state, std::span(rest).subspan(start, kBlockBytes));

  std::string text;
  for (const std::uint32_t word : state)
    for (int shift = 28; shift >= 0; shift -= 4) text += "0123456789abcdef"[word >> shift & 0xFU];
  return text;
}

}  // namespace orvane
