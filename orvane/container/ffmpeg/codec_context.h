#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

#include "orvane/container/ffmpeg/demuxer.h"

namespace orvane {

struct FreeCodecContext {
  void operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
};
using CodecContextPointer = std::unique_ptr<AVCodecContext, FreeCodecContext>;

struct FreeFrame {
  void operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
};
using FramePointer = std::unique_ptr<AVFrame, FreeFrame>;
FramePointer makeFrame();

struct FreeCodecParameters {
  void operator()(AVCodecParameters* parameters) const noexcept {
    avcodec_parameters_free(&parameters);
  }
};
using CodecParametersPointer = std::unique_ptr<AVCodecParameters, FreeCodecParameters>;
/// What a decoder is opened for. Those of a stream change while its packets are read.
CodecParametersPointer copyOf(const AVCodecParameters& parameters);

/// A decoder ready for the demuxer's stream, on the thread that uses it: libavcodec's own threads
/// cost more time, and of damaged audio they give other samples. Throws `PlatformError` when there
/// is none.
CodecContextPointer openCodec(const Demuxer& demuxer, const AVCodecParameters& parameters,
                              int flags2 = 0);
/// The same for what the last packet read has brought.
CodecContextPointer openCodec(const Demuxer& demuxer);

}  // namespace orvane
