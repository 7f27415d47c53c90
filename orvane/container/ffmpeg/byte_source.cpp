#include "orvane/container/ffmpeg/byte_source.h"

#include <algorithm>
#include <cstdio>
#include <new>
#include <span>
#include <utility>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/mem.h>
}

#include "orvane/container/sniff/id3v2_tag.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr int kBufferBytes = 64 << 10;

/// A well-meaning file is read a few times over: probing, headers, an index at the end. One whose
/// forged offsets send a demuxer back for ever is stopped here.
constexpr std::uint64_t kMostPasses = 256;
constexpr std::uint64_t kAlwaysAllowedBytes = std::uint64_t{1} << 20;
constexpr std::uint64_t kMostGapBytes = std::uint64_t{16} << 20;

bool isZero(std::span<const std::byte> bytes) {
  return std::ranges::all_of(bytes, [](std::byte byte) { return byte == std::byte{0}; });
}

}  // namespace

void ByteSource::FreeContext::operator()(AVIOContext* context) const noexcept {
  // FFmpeg may have replaced the buffer it was given.
  av_freep(&context->buffer);
  avio_context_free(&context);
}

ByteSource::ByteSource(std::shared_ptr<const InputFile> file, ProgressObserver* observer)
    : file_(std::move(file)), observer_(observer), tagsEnd_(endOfID3v2Tags(*file_)) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferBytes));
  if (buffer == nullptr) throw std::bad_alloc();
  context_.reset(avio_alloc_context(buffer, kBufferBytes, 0, this, &read, nullptr, &seek));
  if (!context_) {
    av_free(buffer);
    throw std::bad_alloc();
  }
}

void ByteSource::rethrowFailure() const {
  throwIfCancelled();
  if (failure_) std::rethrow_exception(failure_);
}

void ByteSource::throwIfCancelled() const {
  if (observer_ != nullptr && observer_->isCancelled()) throw Cancelled();
}

int ByteSource::read(void* opaque, std::uint8_t* destination, int size) noexcept {
  auto& source = *static_cast<ByteSource*>(opaque);
  if (size <= 0) return AVERROR(EINVAL);
  try {
    return source.readNext(
        {reinterpret_cast<std::byte*>(destination), static_cast<std::size_t>(size)});
  } catch (...) {
    source.failure_ = std::current_exception();
    return AVERROR(EIO);
  }
}

int ByteSource::readNext(std::span<std::byte> destination) {
  throwIfCancelled();
  if (hasEndedInGap_) return AVERROR_EOF;
  if (bytesRead_ / kMostPasses > file_->size() + kAlwaysAllowedBytes) return AVERROR_EXTERNAL;
  const std::size_t count = file_->readAt(position_, destination);
  if (count == 0) return AVERROR_EOF;
  const bool mayBeGap = isEveryGapBounded_ || isZero(destination.first(count));
  gapBytes_ = mayBeGap && position_ >= tagsEnd_ ? gapBytes_ + count : 0;
  position_ += count;
  bytesRead_ += count;
  hasEndedInGap_ = gapBytes_ > kMostGapBytes;
  return static_cast<int>(count);
}

std::int64_t ByteSource::seek(void* opaque, std::int64_t offset, int whence) noexcept {
  auto& source = *static_cast<ByteSource*>(opaque);
  const auto size = static_cast<std::int64_t>(source.file_->size());
  std::int64_t base = 0;
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return size;
    case SEEK_SET:
      break;
    case SEEK_CUR:
      base = static_cast<std::int64_t>(source.position_);
      break;
    case SEEK_END:
      base = size;
      break;
    default:
      return AVERROR(EINVAL);
  }
  std::int64_t target = 0;
  if (__builtin_add_overflow(base, offset, &target) || target < 0) return AVERROR(EINVAL);
  source.position_ = static_cast<std::uint64_t>(target);
  return target;
}

}  // namespace orvane
