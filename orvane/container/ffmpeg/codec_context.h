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

/// A decoder ready for the demuxer's stream, on the thread that uses it: libavcodec's own threads
/// cost more time, and of damaged audio they give other samples. Throws `PlatformError` when there
/// is none.
CodecContextPointer openCodec(const Demuxer& demuxer, int flags2 = 0);

}  // namespace orvane
