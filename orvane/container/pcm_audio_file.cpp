#include "orvane/container/pcm_audio_file.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "orvane/container/container_table.h"
#include "orvane/platform/error.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/sample_conversion.h"

namespace orvane {
namespace {

/// Bytes read and converted at a time: small enough to stay in a core's cache between the two.
constexpr std::size_t kBlockBytes = std::size_t{256} << 10;

/// Tells the observer how far the reading is, from whichever thread ended a block.
class ReadProgress {
 public:
  ReadProgress(ProgressObserver* observer, std::int64_t first, std::int64_t total)
      : observer_(observer), done_(first), total_(total) {}

  void add(std::int64_t frames) {
    if (observer_ == nullptr) return;
    const std::lock_guard lock(mutex_);
    if (observer_->isCancelled()) throw Cancelled();
    done_ += frames;
    observer_->onProgress("Reading", static_cast<double>(done_) / static_cast<double>(total_));
  }

 private:
  ProgressObserver* observer_;
  std::int64_t done_;
  std::int64_t total_;
  std::mutex mutex_;
};

}  // namespace

PCMAudioFile::PCMAudioFile(std::shared_ptr<const InputFile> file, PCMStream stream,
                           const AudioFileOpenOptions& options)
    : AudioFile(std::move(file)), stream_(std::move(stream)), options_(options) {}

std::vector<ChapterMark> PCMAudioFile::unsortedChapters() const {
  const ContainerKind* const kind = containerKind(stream_.description.fileTypeID);
  if (kind == nullptr || kind->markers == nullptr) return {};
  return kind->markers(file(), stream_);
}

void PCMAudioFile::read(PCMBuffer& buffer) {
  const std::int64_t left = stream_.frameCount - position_;
  const auto frames =
      static_cast<std::uint32_t>(std::min<std::int64_t>(left, buffer.frameCapacity()));
  if (frames > 0) readRange(buffer, frames);
  buffer.setFrameLength(frames);
  position_ += frames;
}

void PCMAudioFile::readRange(PCMBuffer& buffer, std::uint32_t frames) {
  const std::size_t frameBytes = stream_.description.dataFormat.bytesPerFrame;
  const std::size_t blockFrames = std::max<std::size_t>(kBlockBytes / frameBytes, 1);
  const std::size_t blocks = (frames + blockFrames - 1) / blockFrames;
  ReadProgress progress(options_.execution.observer, position_, stream_.frameCount);
  std::atomic<std::size_t> nextBlock{0};

  // One task per thread rather than per block, so that each keeps its scratch memory.
  const std::size_t workers =
      std::min(std::max<std::size_t>(options_.execution.threadCount, 1), blocks);
  parallelFor(workers, workers, [&](std::size_t) {
    std::unique_ptr<std::byte[]> scratch;
    for (std::size_t block = nextBlock++; block < blocks; block = nextBlock++) {
      if (!scratch)
        scratch = std::make_unique_for_overwrite<std::byte[]>(
            std::min<std::size_t>(blockFrames, frames) * frameBytes);
      const std::size_t first = block * blockFrames;
      const std::size_t count = std::min<std::size_t>(blockFrames, frames - first);
      file().readExactlyAt(
          stream_.dataOffset + (static_cast<std::uint64_t>(position_) + first) * frameBytes,
          {scratch.get(), count * frameBytes});
      deinterleaveToFloat(stream_.sample, scratch.get(), buffer.room().slice(first, count));
      progress.add(static_cast<std::int64_t>(count));
    }
  });
}

}  // namespace orvane
