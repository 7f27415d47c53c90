#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "orvane/container/ffmpeg/codec_context.h"

namespace orvane {

/// What a frame's samples take.
std::size_t bytesOf(const AVFrame& frame) noexcept;

/// Decoded frames laid end to end in a few long ones, whose memory serves again.
class FrameRun {
 public:
  /// Forgets all frames.
  void clear() noexcept {
    used_ = 0;
    frames_ = 0;
    bytes_ = 0;
  }

  /// Copies a frame's samples. One of another format begins a piece of its own.
  void append(const AVFrame& frame);

  /// Whether `other` is not empty, and what this run ends with, bit for bit.
  bool endsWith(const FrameRun& other) const;

  std::size_t frames() const noexcept { return frames_; }  ///< of the audio
  std::size_t bytes() const noexcept { return bytes_; }

  /// What was appended, in order.
  std::span<const FramePointer> pieces() const noexcept { return {pieces_.data(), used_}; }

 private:
  bool takes(const AVFrame& frame) const;
  void beginPiece(const AVFrame& frame);

  std::vector<FramePointer> pieces_{};
  std::size_t used_ = 0;
  std::size_t frames_ = 0;
  std::size_t bytes_ = 0;
};

/// Has the decoder decode one packet, by way of `frame`, and appends what comes of it to `run`,
/// unless that is null. False when the packet cannot be decoded.
bool decodePacket(AVCodecContext& codec, const AVPacket& packet, AVFrame& frame, FrameRun* run);

}  // namespace orvane
