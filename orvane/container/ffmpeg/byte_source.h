#pragma once

#include <cstdint>
#include <exception>
#include <memory>

extern "C" {
#include <libavformat/avio.h>
}

#include "orvane/platform/input_file.h"

namespace orvane {

/// A regular file as FFmpeg reads it. FFmpeg never sees the file's name, so no part of a name is
/// ever taken for a protocol, and it cannot open anything else through this.
class ByteSource {
 public:
  /// `file` may be shared with others that read it at other places.
  explicit ByteSource(std::shared_ptr<const InputFile> file);
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  AVIOContext* context() const noexcept { return context_.get(); }
  const InputFile& file() const noexcept { return *file_; }
  /// Throws the failure of an earlier read, of which FFmpeg has only seen a code.
  void rethrowFailure() const;

 private:
  struct FreeContext {
    void operator()(AVIOContext* context) const noexcept;
  };

  static int read(void* opaque, std::uint8_t* destination, int size) noexcept;
  static std::int64_t seek(void* opaque, std::int64_t offset, int whence) noexcept;

  std::shared_ptr<const InputFile> file_;
  std::uint64_t position_ = 0;
  std::uint64_t bytesRead_ = 0;
  std::exception_ptr failure_{};
  std::unique_ptr<AVIOContext, FreeContext> context_;
};

}  // namespace orvane
