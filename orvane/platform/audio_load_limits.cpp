#include "orvane/platform/audio_load_limits.h"

#include <algorithm>

#include "orvane/platform/host_memory.h"
#include "orvane/platform/precondition.h"

namespace orvane::AudioLoadLimits {
namespace {

// The header says what each of them decides.
constexpr std::int64_t kMemoryFloor = std::int64_t{8} << 30;
constexpr std::int64_t kFrameBound = std::int64_t{1} << 30;
constexpr std::int64_t kLargeBuffer = std::int64_t{1} << 32;
constexpr double kUsableShare = 0.75;

std::int64_t flooredPhysicalBytes(const HostMemory& memory) {
  return std::max(memory.physicalBytes, kMemoryFloor);
}

}  // namespace

std::int64_t maxDecodedBytes() {
  return flooredPhysicalBytes(HostMemory::current()) / 2;
}

std::int64_t largeFileThresholdBytes() {
  return flooredPhysicalBytes(HostMemory::current()) / 4;
}

std::int64_t availableBytes() {
  const HostMemory memory = HostMemory::current();
  if (!memory.statistics) return flooredPhysicalBytes(memory) / 2;
  return memory.statistics->freeAndPurgeableBytes + memory.statistics->inactiveBytes / 2;
}

std::int64_t decodedBytes(std::int64_t frameLength, std::int64_t channelCount) {
  const std::int64_t frames = std::max<std::int64_t>(frameLength, 0);
  const std::int64_t channels = std::max<std::int64_t>(channelCount, 0);
  std::int64_t bytes = 0;
  const bool overflows = __builtin_mul_overflow(frames, channels, &bytes) ||
                         __builtin_mul_overflow(bytes, std::int64_t{sizeof(float)}, &bytes);
  precondition(!overflows, "decoded bytes must fit 64 bits");
  return bytes;
}

bool isWithinLimits(std::int64_t frameLength, std::int64_t channelCount) {
  if (frameLength < 1 || frameLength >= kFrameBound || channelCount < 1) return false;
  // Frames stay below 2^30, so that only an absurd channel count could overflow.
  constexpr std::int64_t kMostChannels = std::int64_t{1} << 30;
  if (channelCount > kMostChannels) return false;
  const std::int64_t bytes = decodedBytes(frameLength, channelCount);
  const HostMemory memory = HostMemory::current();
  if (bytes >= kLargeBuffer && !memory.supportsLargeBuffers) return false;
  return flooredPhysicalBytes(memory) / 2 >= bytes;
}

bool isLargeFile(std::int64_t decodedBytes) {
  return decodedBytes >= largeFileThresholdBytes();
}

bool rebuildEditFits(std::int64_t decodedBytes) {
  // Divided instead of multiplied, which cannot overflow and is the same for whole numbers.
  return decodedBytes <= 0 || maxDecodedBytes() / rebuildEditWorkingSetMultiplier >= decodedBytes;
}

bool inRAMHeavyRebuildFits(std::int64_t decodedBytes) {
  return inRAMRebuildFitsLive(decodedBytes, heavyRebuildWorkingSetMultiplier);
}

bool inRAMRebuildFitsLive(std::int64_t decodedBytes, std::int64_t multiplier) {
  if (decodedBytes <= 0) return true;
  return static_cast<double>(availableBytes()) * kUsableShare >=
         static_cast<double>(decodedBytes) * static_cast<double>(multiplier);
}

}  // namespace orvane::AudioLoadLimits
