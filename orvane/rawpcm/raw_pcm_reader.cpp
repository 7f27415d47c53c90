#include "orvane/rawpcm/raw_pcm_reader.h"

#include <algorithm>
#include <atomic>
#include <vector>

#include "orvane/audio/audio_load_limits.h"
#include "orvane/core/pcm_buffer_allocation.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/sample_conversion.h"
#include "orvane/platform/stage_progress.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"

namespace orvane::RawPCMReader {
namespace {

/// Source bytes taken at a time: few enough to stay in a core's cache until they are converted.
constexpr std::int64_t kBlockBytes = std::int64_t{256} << 10;

/// The bytes behind the header skip, wherever they lie.
class Payload {
 public:
  virtual ~Payload() = default;
  /// `count` bytes from `offset` on: in place, or read into `scratch`, which is made large enough.
  virtual const std::byte* bytes(std::int64_t offset, std::int64_t count,
                                 std::vector<std::byte>& scratch) const = 0;
};

class PayloadInMemory : public Payload {
 public:
  explicit PayloadInMemory(std::span<const std::byte> bytes) : bytes_(bytes) {}

  const std::byte* bytes(std::int64_t offset, std::int64_t count,
                         std::vector<std::byte>& /*scratch*/) const override {
    precondition(offset + count <= static_cast<std::int64_t>(bytes_.size()),
                 "the payload must hold the frames that are asked for");
    return bytes_.data() + offset;
  }

 private:
  std::span<const std::byte> bytes_;
};

class PayloadInFile : public Payload {
 public:
  PayloadInFile(const InputFile& file, std::int64_t start) : file_(file), start_(start) {}

  const std::byte* bytes(std::int64_t offset, std::int64_t count,
                         std::vector<std::byte>& scratch) const override {
    const auto size = static_cast<std::size_t>(count);
    if (scratch.size() < size) scratch.resize(size);
    file_.readExactlyAt(static_cast<std::uint64_t>(start_ + offset),
                        std::span(scratch).first(size));
    return scratch.data();
  }

 private:
  const InputFile& file_;
  std::int64_t start_;
};

SampleEncoding sampleEncoding(const RawPCMFormat& format) {
  constexpr SampleType kTypes[] = {SampleType::unsignedInt8, SampleType::int16, SampleType::int24,
                                   SampleType::int24In32,    SampleType::int32, SampleType::float32,
                                   SampleType::float64};
  return {kTypes[static_cast<std::size_t>(format.encoding)],
          format.endianness == RawPCMFormat::Endianness::big};
}

/// Cuts the work into blocks and converts them, in any order, on the threads of the call. A run is
/// the whole payload of an interleaved file or one channel of a planar one.
class Filler {
 public:
  Filler(PCMBuffer& buffer, const Payload& payload, const RawPCMFormat& format, std::int64_t frames,
         std::int64_t fullFrames)
      : buffer_(buffer),
        payload_(payload),
        encoding_(sampleEncoding(format)),
        frames_(frames),
        unit_(format.isPlanar ? bytesPerSample(format.encoding) : format.bytesPerFrame()),
        runBytes_(fullFrames * unit_),
        channelsPerRun_(format.isPlanar ? 1 : buffer.channelCount()),
        blockFrames_(std::max<std::int64_t>(kBlockBytes / unit_, 1)),
        blocksPerRun_((frames + blockFrames_ - 1) / blockFrames_) {}

  void run(const Execution& execution) {
    const auto blocks =
        static_cast<std::size_t>(blocksPerRun_) * (buffer_.channelCount() / channelsPerRun_);
    StageProgress progress(execution.observer, "Reading", blocks);
    std::atomic<std::size_t> next{0};
    // One task per thread, not per block, so that each keeps its scratch memory.
    const std::size_t workers = std::clamp<std::size_t>(execution.threadCount, 1, blocks);
    parallelFor(workers, workers, [&](std::size_t) {
      std::vector<std::byte> scratch;
      std::vector<float*> destinations(channelsPerRun_);
      for (std::size_t block = next++; block < blocks; block = next++) {
        convertBlock(static_cast<std::int64_t>(block), scratch, destinations);
        progress.advance(1);
      }
    });
  }

 private:
  void convertBlock(std::int64_t block, std::vector<std::byte>& scratch,
                    std::vector<float*>& destinations) const {
    const std::int64_t run = block / blocksPerRun_;
    const std::int64_t first = block % blocksPerRun_ * blockFrames_;
    const std::int64_t count = std::min(blockFrames_, frames_ - first);
    const std::byte* source =
        payload_.bytes(run * runBytes_ + first * unit_, count * unit_, scratch);
    for (std::size_t c = 0; c < destinations.size(); ++c)
      destinations[c] =
          buffer_.channel(static_cast<std::uint32_t>(run + static_cast<std::int64_t>(c))) + first;
    deinterleaveToFloat(encoding_, source, static_cast<std::size_t>(count), destinations.size(),
                        destinations.data());
  }

  PCMBuffer& buffer_;
  const Payload& payload_;
  SampleEncoding encoding_;
  std::int64_t frames_;
  std::int64_t unit_;      ///< bytes per frame of a run
  std::int64_t runBytes_;  ///< from one run's start to the next
  std::size_t channelsPerRun_;
  std::int64_t blockFrames_;
  std::int64_t blocksPerRun_;
};

void fillFrom(const Payload& payload, PCMBuffer& buffer, const RawPCMFormat& format,
              std::int64_t frames, std::int64_t fullFrames, const Execution& execution) {
  if (buffer.channelCount() == 0 || frames < 1) return;
  precondition(buffer.channelCount() == format.channelCount && frames <= buffer.frameCapacity() &&
                   frames <= fullFrames,
               "the buffer must have the format's channels and room for the frames");
  Filler(buffer, payload, format, frames, fullFrames).run(execution);
}

[[noreturn]] void fail(RawPCMImportError::Case failureCase) {
  throw RawPCMImportError(std::move(failureCase));
}

/// Frames in a file of that size, or the reason why there are none.
std::int64_t requiredFrameCount(const RawPCMFormat& format, std::int64_t fileSize) {
  if (!format.isShapeValid()) fail(RawPCMImportError::InvalidFormat{});
  if (const auto count = format.frameCount(fileSize)) return *count;
  if (fileSize > format.headerSkipBytes) {
    const std::int64_t frame = format.bytesPerFrame();
    const std::int64_t leftover = (fileSize - format.headerSkipBytes) % frame;
    if (leftover > (format.isPlanar ? 0 : format.trailingBytesTolerance))
      fail(RawPCMImportError::NonDivisibleSize{leftover, frame});
  }
  fail(RawPCMImportError::EmptyPayload{});
}

/// Checks size and limits, makes the buffer, fills it from `payload` (which is asked for only
/// then).
std::shared_ptr<PCMBuffer> readPayload(const Payload& payload, std::int64_t fileSize,
                                       const RawPCMFormat& format,
                                       std::optional<std::int64_t> maxFrames,
                                       const Execution& execution) {
  const std::int64_t fullFrames = requiredFrameCount(format, fileSize);
  const std::int64_t frames = maxFrames ? std::min(*maxFrames, fullFrames) : fullFrames;
  if (!AudioLoadLimits::isWithinLimits(frames, format.channelCount))
    fail(RawPCMImportError::TooLarge{});
  const auto processing = processingFormat(format.sampleRate, format.channelCount);
  if (!processing) fail(RawPCMImportError::BufferAllocationFailed{});
  const auto capacity = static_cast<std::uint32_t>(frames);
  auto buffer = core::PCMBufferAllocation::make(*processing, capacity);
  if (!buffer) fail(RawPCMImportError::BufferAllocationFailed{});
  fillFrom(payload, *buffer, format, frames, fullFrames, execution);
  buffer->setFrameLength(capacity);
  return buffer;
}

}  // namespace

std::shared_ptr<PCMBuffer> read(const std::filesystem::path& url, const RawPCMFormat& format,
                                std::optional<std::int64_t> maxFrames, const Execution& execution) {
  try {
    const InputFile file(url);
    return readPayload(PayloadInFile(file, format.headerSkipBytes),
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
  return readPayload(PayloadInMemory(data.subspan(skip)), size, format, maxFrames, execution);
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
  fillFrom(PayloadInMemory(payload), buffer, format, frames, fullFrames, execution);
}

}  // namespace orvane::RawPCMReader
