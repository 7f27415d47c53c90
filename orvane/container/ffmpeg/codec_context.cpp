#include "orvane/container/ffmpeg/codec_context.h"

#include <cerrno>
#include <cstdint>
#include <new>
#include <string>

extern "C" {
#include <libavutil/samplefmt.h>
}

#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// Refuses frames larger than any codec's longest of sixteen channels: forged numbers of samples
/// and channels would take gigabytes on each of a decoder's threads.
int allocateFrame(AVCodecContext* codec, AVFrame* frame, int flags) {
  constexpr std::int64_t kMostBytes = std::int64_t{32} << 20;
  const auto bytesPerFrame = std::int64_t{frame->ch_layout.nb_channels} *
                             av_get_bytes_per_sample(static_cast<AVSampleFormat>(frame->format));
  if (bytesPerFrame * frame->nb_samples > kMostBytes) return AVERROR_INVALIDDATA;
  return avcodec_default_get_buffer2(codec, frame, flags);
}

}  // namespace

FramePointer makeFrame() {
  FramePointer frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  return frame;
}

CodecParametersPointer copyOf(const AVCodecParameters& parameters) {
  CodecParametersPointer copy(avcodec_parameters_alloc());
  if (!copy || avcodec_parameters_copy(copy.get(), &parameters) < 0) throw std::bad_alloc();
  return copy;
}

CodecContextPointer openCodec(const Demuxer& demuxer) {
  return openCodec(demuxer, *demuxer.stream().codecpar);
}

CodecContextPointer openCodec(const Demuxer& demuxer, const AVCodecParameters& parameters,
                              int flags2) {
  const std::string name = avcodec_get_name(parameters.codec_id);
  if (parameters.codec_id == AV_CODEC_ID_NONE)
    throw PlatformError(demuxer.path(), "There is no decoder for its codec");
  if (demuxer.codec() == nullptr)
    throw PlatformError(demuxer.path(), "There is no decoder for its codec, " + name);
  CodecContextPointer context(avcodec_alloc_context3(demuxer.codec()));
  if (!context) throw std::bad_alloc();
  int result = avcodec_parameters_to_context(context.get(), &parameters);
  context->pkt_timebase = demuxer.stream().time_base;
  context->thread_count = 1;
  context->flags2 |= flags2;
  context->get_buffer2 = allocateFrame;
  if (result >= 0) result = avcodec_open2(context.get(), demuxer.codec(), nullptr);
  if (result == AVERROR_PATCHWELCOME || result == AVERROR(ENOSYS))
    throw PlatformError(demuxer.path(),
                        "There is no decoder for this variant of its codec, " + name);
  if (result < 0) throw PlatformError(demuxer.path(), ffmpegErrorText(result));
  return context;
}

}  // namespace orvane
