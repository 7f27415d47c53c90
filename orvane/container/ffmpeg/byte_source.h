#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <span>

extern "C" {
#include <libavformat/avio.h>
}

#include "orvane/platform/input_file.h"
#include "orvane/platform/progress.h"

namespace orvane {

/// A regular file as FFmpeg reads it. FFmpeg never sees the file's name, so no part of a name is
/// ever taken for a protocol, and it cannot open anything else through this.
class ByteSource {
 public:
  /// `file` may be shared with others that read it at other places. `observer` may end the reading
  /// at any place; not owned, may be null.
  ByteSource(std::shared_ptr<const InputFile> file, ProgressObserver* observer);
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  AVIOContext* context() const noexcept { return context_.get(); }
  const InputFile& file() const noexcept { return *file_; }
  /// Throws the failure of an earlier read, of which FFmpeg has only seen a code, and `Cancelled`
  /// when the observer asks for it.
  void rethrowFailure() const;

  /// Between two packets the file may hold 16 MiB that lead to none; then it ends for FFmpeg, whose
  /// parsers would gather all of it. Only zeros count as such unless `boundEveryGap` was called,
  /// for where nothing but the audio is read: other streams are read over without a packet. Tags
  /// at the file's start may be of any size.
  void notePacket() noexcept { gapBytes_ = 0; }
  void boundEveryGap() noexcept { isEveryGapBounded_ = true; }
  /// Whether the file ended for that reason.
  bool hasEndedInGap() const noexcept { return hasEndedInGap_; }

 private:
  struct FreeContext {
    void operator()(AVIOContext* context) const noexcept;
  };

  static int read(void* opaque, std::uint8_t* destination, int size) noexcept;
  static std::int64_t seek(void* opaque, std::int64_t offset, int whence) noexcept;

  void throwIfCancelled() const;
  int readNext(std::span<std::byte> destination);

  std::shared_ptr<const InputFile> file_;
  ProgressObserver* observer_;
  std::uint64_t tagsEnd_;
  std::uint64_t position_ = 0;
  std::uint64_t bytesRead_ = 0;
  std::uint64_t gapBytes_ = 0;
  bool isEveryGapBounded_ = false;
  bool hasEndedInGap_ = false;
  std::exception_ptr failure_{};
  std::unique_ptr<AVIOContext, FreeContext> context_;
};

}  // namespace orvane
