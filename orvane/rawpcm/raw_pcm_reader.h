#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>

#include "orvane/platform/audio_format.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/rawpcm/raw_pcm_format.h"

/// Reads headerless PCM, as declared, into planar float.
namespace orvane::RawPCMReader {

/// Reads the file at `url`. Channels stay in stored order; values are −1 … +1, floating-point ones
/// as they are. `maxFrames`, when smaller than the file's frame count, takes only so many from the
/// start (of every channel). Throws `RawPCMImportError`, checking in the order: file, shape of the
/// format, size, memory limit, allocation; and `Cancelled`. The stage is "Reading".
ORVANE_API std::shared_ptr<PCMBuffer> read(const std::filesystem::path& url,
                                           const RawPCMFormat& format,
                                           std::optional<std::int64_t> maxFrames = {},
                                           const Execution& execution = {});

/// The same on the bytes of a file.
ORVANE_API std::shared_ptr<PCMBuffer> read(std::span<const std::byte> data,
                                           const RawPCMFormat& format,
                                           std::optional<std::int64_t> maxFrames = {},
                                           const Execution& execution = {});

/// Planar float at that rate. One and two channels have no layout; 3 to 6 and 8 the usual ones
/// (MPEG 3.0 A, quadraphonic, MPEG 5.0 A, 5.1 A, 7.1 C); all other counts are discrete. Absent when
/// a buffer of that many channels cannot be described.
ORVANE_API std::optional<AudioFormat> processingFormat(double sampleRate,
                                                       std::int64_t channelCount);

/// Converts `frames` frames of `payload`, which begins behind the header skip, into the buffer's
/// channels from their start; does nothing for fewer than one frame or a buffer without channels.
/// `fullFrames` is the frame count of the whole file, by which a planar file's channel runs are
/// found. The frame length is left alone. The buffer must have the format's channels and room for
/// the frames, the payload must hold them.
ORVANE_API void fill(PCMBuffer& buffer, std::span<const std::byte> payload,
                     const RawPCMFormat& format, std::int64_t frames, std::int64_t fullFrames,
                     const Execution& execution = {});

}  // namespace orvane::RawPCMReader
