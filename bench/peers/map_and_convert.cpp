// map_and_convert FILE [CHANNELS]: maps a 24-bit WAVE file, stereo by default, and converts it to
// planar floats, on all cores: the least that any measurement of a whole file in memory costs.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "orvane/platform/parallel.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/platform/sample_conversion.h"

namespace {

constexpr std::size_t kHeaderBytes = 44;  // a little more of it counts for audio: it takes no time
constexpr std::size_t kBytesPerSample = 3;
constexpr std::size_t kPieceFrames = 1 << 16;

}  // namespace

int main(int argc, char** argv) {
  const int file = argc >= 2 ? open(argv[1], O_RDONLY | O_CLOEXEC) : -1;
  const int channels = argc == 3 ? std::atoi(argv[2]) : 2;
  struct stat status {};
  if (argc > 3 || channels < 1 || file < 0 || fstat(file, &status) != 0) {
    std::fputs("usage: map_and_convert FILE [CHANNELS]\n", stderr);
    return 2;
  }
  const auto bytes = static_cast<std::size_t>(status.st_size);
  void* memory = mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE, file, 0);
  if (memory == MAP_FAILED) return 1;
  madvise(memory, bytes, MADV_SEQUENTIAL);
  const std::byte* samples = static_cast<const std::byte*>(memory) + kHeaderBytes;
  const std::size_t bytesPerFrame = kBytesPerSample * static_cast<std::size_t>(channels);
  const std::size_t frames = (bytes - kHeaderBytes) / bytesPerFrame;

  orvane::AudioFormat format;
  format.sampleRate = 48000;
  format.channelCount = static_cast<std::uint32_t>(channels);
  const auto buffer = orvane::PCMBuffer::make(format, static_cast<std::uint32_t>(frames));
  if (!buffer) return 1;
  const std::size_t pieces = (frames + kPieceFrames - 1) / kPieceFrames;
  orvane::parallelFor(std::thread::hardware_concurrency(), pieces, [&](std::size_t piece) {
    const std::size_t begin = piece * kPieceFrames;
    orvane::deinterleaveToFloat(
        orvane::SampleEncoding::signedInteger(3), samples + begin * bytesPerFrame,
        buffer->room().slice(begin, std::min(kPieceFrames, frames - begin)));
  });
  std::printf("%zu frames, the last one %g\n", frames,
              static_cast<double>(frames > 0 ? buffer->channel(0)[frames - 1] : 0.0F));
  return 0;
}
