#include "orvane/rawpcm/raw_pcm_filling.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "orvane/platform/parallel.h"
#include "orvane/platform/precondition.h"
#include "orvane/platform/sample_conversion.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"

namespace orvane {
namespace {

/// Source bytes taken at a time: few enough to stay in a core's cache until they are converted.
constexpr std::int64_t kBlockBytes = std::int64_t{256} << 10;

/// Cuts the work into blocks and converts them, in any order, on the threads of the call. A run is
/// the whole payload of an interleaved file or one channel of a planar one.
class Filler {
 public:
  Filler(PCMBuffer& buffer, const RawPCMPayload& payload, const RawPCMFormat& format,
         const RawPCMFrames& frames)
      : buffer_(buffer),
        payload_(payload),
        encoding_(sampleEncoding(format)),
        frames_(frames),
        unit_(format.isPlanar ? bytesPerSample(format.encoding) : format.bytesPerFrame()),
        runBytes_(frames.fullFrames * unit_),
        channelsPerRun_(format.isPlanar ? 1 : buffer.channelCount()),
        blockFrames_(std::max<std::int64_t>(kBlockBytes / unit_, 1)),
        blocksPerRun_((frames.count + blockFrames_ - 1) / blockFrames_) {}

  void run(std::size_t threadCount, StageProgress& progress) {
    const auto blocks =
        static_cast<std::size_t>(blocksPerRun_) * (buffer_.channelCount() / channelsPerRun_);
    std::atomic<std::size_t> next{0};
    // One task per thread, not per block, so that each keeps its scratch memory.
    const std::size_t workers = std::clamp<std::size_t>(threadCount, 1, blocks);
    parallelFor(workers, workers, [&](std::size_t) {
      std::vector<std::byte> scratch;
      for (std::size_t block = next++; block < blocks; block = next++)
        progress.advance(convertBlock(static_cast<std::int64_t>(block), scratch));
    });
  }

 private:
  /// Gives the frames converted.
  std::size_t convertBlock(std::int64_t block, std::vector<std::byte>& scratch) const {
    const std::int64_t run = block / blocksPerRun_;
    const std::int64_t first = block % blocksPerRun_ * blockFrames_;
    const std::int64_t count = std::min(blockFrames_, frames_.count - first);
    const std::byte* source =
        payload_.bytes(run * runBytes_ + (frames_.first + first) * unit_, count * unit_, scratch);
    deinterleaveToFloat(
        encoding_, source,
        buffer_.room()
            .channels(static_cast<std::size_t>(run), channelsPerRun_)
            .slice(static_cast<std::size_t>(first), static_cast<std::size_t>(count)));
    return static_cast<std::size_t>(count);
  }

  PCMBuffer& buffer_;
  const RawPCMPayload& payload_;
  SampleEncoding encoding_;
  RawPCMFrames frames_;
  std::int64_t unit_;      ///< bytes per frame of a run
  std::int64_t runBytes_;  ///< from one run's start to the next
  std::size_t channelsPerRun_;
  std::int64_t blockFrames_;
  std::int64_t blocksPerRun_;
};

[[noreturn]] void fail(RawPCMImportError::Case failureCase) {
  throw RawPCMImportError(std::move(failureCase));
}

}  // namespace

SampleEncoding sampleEncoding(const RawPCMFormat& format) {
  using enum RawPCMFormat::Encoding;
  const bool isBigEndian = format.endianness == RawPCMFormat::Endianness::big;
  switch (format.encoding) {
    case uint8:
      return SampleEncoding::unsignedInteger(1);
    case int16:
      return SampleEncoding::signedInteger(2, isBigEndian);
    case int24Packed:
      return SampleEncoding::signedInteger(3, isBigEndian);
    case int24In32:
      return SampleEncoding::low24In32(isBigEndian);
    case int32:
      return SampleEncoding::signedInteger(4, isBigEndian);
    case float32:
      return SampleEncoding::floatingPoint(4, isBigEndian);
    case float64:
      return SampleEncoding::floatingPoint(8, isBigEndian);
  }
  return {};
}

std::int64_t requiredRawPCMFrames(const RawPCMFormat& format, std::int64_t fileSize) {
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

const std::byte* RawPCMPayloadInMemory::bytes(std::int64_t offset, std::int64_t count,
                                              std::vector<std::byte>& /*scratch*/) const {
  precondition(offset + count <= static_cast<std::int64_t>(bytes_.size()),
               "the payload must hold the frames that are asked for");
  return bytes_.data() + offset;
}

const std::byte* RawPCMPayloadInFile::bytes(std::int64_t offset, std::int64_t count,
                                            std::vector<std::byte>& scratch) const {
  const auto size = static_cast<std::size_t>(count);
  if (scratch.size() < size) scratch.resize(size);
  file_.readExactlyAt(static_cast<std::uint64_t>(start_ + offset), std::span(scratch).first(size));
  return scratch.data();
}

void fillRawPCM(PCMBuffer& buffer, const RawPCMPayload& payload, const RawPCMFormat& format,
                const RawPCMFrames& frames, std::size_t threadCount, StageProgress& progress) {
  if (buffer.channelCount() == 0 || frames.count < 1) return;
  precondition(buffer.channelCount() == format.channelCount &&
                   frames.count <= buffer.frameCapacity() &&
                   frames.first + frames.count <= frames.fullFrames,
               "the buffer must have the format's channels and room for the frames");
  Filler(buffer, payload, format, frames).run(threadCount, progress);
}

std::size_t rawPCMWork(const RawPCMFormat& format, std::int64_t frames) {
  const std::int64_t runs = format.isPlanar ? format.channelCount : 1;
  return static_cast<std::size_t>(std::max<std::int64_t>(frames, 0) * runs);
}

}  // namespace orvane
