#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "orvane/platform/input_file.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/platform/sample_encoding.h"
#include "orvane/platform/stage_progress.h"
#include "orvane/rawpcm/raw_pcm_format.h"

namespace orvane {

/// The bytes of headerless PCM behind the header skip, wherever they lie.
class RawPCMPayload {
 public:
  virtual ~RawPCMPayload() = default;
  /// `count` bytes from `offset` on: in place, or read into `scratch`, which is made large enough.
  virtual const std::byte* bytes(std::int64_t offset, std::int64_t count,
                                 std::vector<std::byte>& scratch) const = 0;
};

class RawPCMPayloadInMemory final : public RawPCMPayload {
 public:
  explicit RawPCMPayloadInMemory(std::span<const std::byte> bytes) : bytes_(bytes) {}
  const std::byte* bytes(std::int64_t offset, std::int64_t count,
                         std::vector<std::byte>& scratch) const override;

 private:
  std::span<const std::byte> bytes_;
};

class RawPCMPayloadInFile final : public RawPCMPayload {
 public:
  /// `start`: the first byte behind the header skip. The file must outlive the payload.
  RawPCMPayloadInFile(const InputFile& file, std::int64_t start) : file_(file), start_(start) {}
  const std::byte* bytes(std::int64_t offset, std::int64_t count,
                         std::vector<std::byte>& scratch) const override;

 private:
  const InputFile& file_;
  std::int64_t start_;
};

/// How the samples of such a file are stored.
SampleEncoding sampleEncoding(const RawPCMFormat& format);

/// Frames in a file of that size; throws `RawPCMImportError` when the format's shape is wrong or
/// the size does not fit it.
std::int64_t requiredRawPCMFrames(const RawPCMFormat& format, std::int64_t fileSize);

/// Frames of a payload of `fullFrames` frames, by which a planar payload's channel runs are found.
struct RawPCMFrames {
  std::int64_t first;
  std::int64_t count;
  std::int64_t fullFrames;
};

/// Converts frames into the buffer's channels, from their start, on up to `threadCount` threads;
/// does nothing for no frames or a buffer without channels. Adds `rawPCMWork` to the progress. The
/// frame length is left alone.
void fillRawPCM(PCMBuffer& buffer, const RawPCMPayload& payload, const RawPCMFormat& format,
                const RawPCMFrames& frames, std::size_t threadCount, StageProgress& progress);

/// What converting that many frames adds to the progress.
std::size_t rawPCMWork(const RawPCMFormat& format, std::int64_t frames);

}  // namespace orvane
