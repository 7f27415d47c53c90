#include "orvane/rawpcm/raw_pcm_reader.h"

#include <algorithm>

#include "orvane/core/pcm_buffer_allocation.h"
#include "orvane/platform/audio_load_limits.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/stage_progress.h"
#include "orvane/rawpcm/raw_pcm_filling.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"

namespace orvane::RawPCMReader {
namespace {

[[noreturn]] void fail(RawPCMImportError::Case failureCase) {
  throw RawPCMImportError(std::move(failureCase));
}

void fillWhole(const RawPCMPayload& payload, PCMBuffer& buffer, const RawPCMFormat& format,
               std::int64_t frames, std::int64_t fullFrames, const Execution& execution) {
  StageProgress progress(execution.observer, "Reading", rawPCMWork(format, frames));
  fillRawPCM(buffer, payload, format, {0, frames, fullFrames}, execution.threadCount, progress);
}

/// Checks size and limits, makes the buffer, fills it from `payload` (which is asked for only
/// then).
std::shared_ptr<PCMBuffer> readPayload(const RawPCMPayload& payload, std::int64_t fileSize,
                                       const RawPCMFormat& format,
                                       std::optional<std::int64_t> maxFrames,
                                       const Execution& execution) {
  const std::int64_t fullFrames = requiredRawPCMFrames(format, fileSize);
  const std::int64_t frames = maxFrames ? std::min(*maxFrames, fullFrames) : fullFrames;
  if (!AudioLoadLimits::isWithinLimits(frames, format.channelCount))
    fail(RawPCMImportError::TooLarge{});
  const auto processing = processingFormat(format.sampleRate, format.channelCount);
  if (!processing) fail(RawPCMImportError::BufferAllocationFailed{});
  const auto capacity = static_cast<std::uint32_t>(frames);
  auto buffer = core::PCMBufferAllocation::make(*processing, capacity);
  if (!buffer) fail(RawPCMImportError::BufferAllocationFailed{});
  fillWhole(payload, *buffer, format, frames, fullFrames, execution);
  buffer->setFrameLength(capacity);
  return buffer;
}

}  // namespace

std::shared_ptr<PCMBuffer> read(const std::filesystem::path& url, const RawPCMFormat& format,
                                std::optional<std::int64_t> maxFrames, const Execution& execution) {
  try {
    const InputFile file(url);
    return readPayload(RawPCMPayloadInFile(file, format.headerSkipBytes),
                       static_cast<std::int64_t>(file.size()), format, maxFrames, execution);
  } catch (const PlatformError& error) {
    fail(RawPCMImportError::UnreadableFile{error.errorDescription()});
  }
}

std::shared_ptr<PCMBuffer> read(std::span<const std::byte> data, const RawPCMFormat& format,
                                std::optional<std::int64_t> maxFrames, const Execution& execution) {
  const auto size = static_cast<std::int64_t>(data.size());
  const auto skip =
      static_cast<std::size_t>(std::clamp<std::int64_t>(format.headerSkipBytes, 0, size));
  return readPayload(RawPCMPayloadInMemory(data.subspan(skip)), size, format, maxFrames, execution);
}

std::optional<AudioFormat> processingFormat(double sampleRate, std::int64_t channelCount) {
  constexpr std::int64_t kMostChannels = 0xFFFF;  // what a layout tag can count
  if (channelCount < 1 || channelCount > kMostChannels) return std::nullopt;
  AudioFormat format{.sampleRate = sampleRate,
                     .channelCount = static_cast<std::uint32_t>(channelCount)};
  const auto tag = [&]() -> ChannelLayoutTag {
    switch (channelCount) {
      case 3:
        return ChannelLayoutTags::mpeg30A;
      case 4:
        return ChannelLayoutTags::quadraphonic;
      case 5:
        return ChannelLayoutTags::mpeg50A;
      case 6:
        return ChannelLayoutTags::mpeg51A;
      case 8:
        return ChannelLayoutTags::mpeg71C;
      default:
        return ChannelLayoutTags::discreteInOrder | format.channelCount;
    }
  };
  if (channelCount > 2) format.layout = ChannelLayout::fromTag(tag());
  return format;
}

void fill(PCMBuffer& buffer, std::span<const std::byte> payload, const RawPCMFormat& format,
          std::int64_t frames, std::int64_t fullFrames, const Execution& execution) {
  fillWhole(RawPCMPayloadInMemory(payload), buffer, format, frames, fullFrames, execution);
}

}  // namespace orvane::RawPCMReader
