// map_and_convert FILE: maps a 24-bit stereo WAVE file with a plain header and converts it to
// planar floats, on all cores: the least that any measurement of a whole file in memory costs.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <thread>

#include "orvane/platform/parallel.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/platform/sample_conversion.h"

namespace {

constexpr std::size_t kHeaderBytes = 44;
constexpr std::size_t kBytesPerFrame = 6;
constexpr std::size_t kPieceFrames = 1 << 16;

}  // namespace

int main(int argc, char** argv) {
  const int file = argc == 2 ? open(argv[1], O_RDONLY | O_CLOEXEC) : -1;
  struct stat status {};
  if (file < 0 || fstat(file, &status) != 0) {
    std::fputs("usage: map_and_convert FILE\n", stderr);
    return 2;
  }
  const auto bytes = static_cast<std::size_t>(status.st_size);
  void* memory = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, file, 0);
  if (memory == MAP_FAILED) return 1;
  madvise(memory, bytes, MADV_SEQUENTIAL);
  const std::byte* samples = static_cast<const std::byte*>(memory) + kHeaderBytes;
  const std::size_t frames = (bytes - kHeaderBytes) / kBytesPerFrame;

  orvane::AudioFormat format;
  format.sampleRate = 48000;
  format.channelCount = 2;
  const auto buffer = orvane::PCMBuffer::make(format, static_cast<std::uint32_t>(frames));
  if (!buffer) return 1;
  const std::size_t pieces = (frames + kPieceFrames - 1) / kPieceFrames;
  orvane::parallelFor(std::thread::hardware_concurrency(), pieces, [&](std::size_t piece) {
    const std::size_t begin = piece * kPieceFrames;
    orvane::deinterleaveToFloat(
        orvane::SampleEncoding::signedInteger(3), samples + begin * kBytesPerFrame,
        buffer->room().slice(begin, std::min(kPieceFrames, frames - begin)));
  });
  std::printf("%zu frames, the last one %g\n", frames,
              static_cast<double>(frames > 0 ? buffer->channel(0)[frames - 1] : 0.0F));
  return 0;
}
