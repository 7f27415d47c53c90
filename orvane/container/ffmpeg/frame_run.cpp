#include "orvane/container/ffmpeg/frame_run.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
}

namespace orvane {
namespace {

constexpr int kPieceFrames = 1 << 15;

AVSampleFormat formatOf(const AVFrame& frame) {
  return static_cast<AVSampleFormat>(frame.format);
}

bool haveSameFormat(const AVFrame& a, const AVFrame& b) {
  return a.format == b.format && a.sample_rate == b.sample_rate &&
         a.ch_layout.nb_channels == b.ch_layout.nb_channels;
}

/// Whether `count` frames are the same bits, from frame `firstOfA` of `a` and `firstOfB` of `b` on.
bool areSame(const AVFrame& a, int firstOfA, const AVFrame& b, int firstOfB, int count) {
  if (!haveSameFormat(a, b)) return false;
  const int channels = a.ch_layout.nb_channels;
  const bool isPlanar = av_sample_fmt_is_planar(formatOf(a)) != 0;
  const int planes = isPlanar ? channels : 1;
  const int bytesPerFrame = av_get_bytes_per_sample(formatOf(a)) * (isPlanar ? 1 : channels);
  const auto bytes = [&](int frames) { return static_cast<std::size_t>(frames * bytesPerFrame); };
  for (int plane = 0; plane < planes; ++plane)
    if (std::memcmp(a.extended_data[plane] + bytes(firstOfA),
                    b.extended_data[plane] + bytes(firstOfB), bytes(count)) != 0)
      return false;
  return true;
}

/// How many frames a piece has memory for.
int capacityOf(const AVFrame& piece) {
  const bool isPlanar = av_sample_fmt_is_planar(formatOf(piece)) != 0;
  return piece.linesize[0] / av_get_bytes_per_sample(formatOf(piece)) /
         (isPlanar ? 1 : piece.ch_layout.nb_channels);
}

}  // namespace

std::size_t bytesOf(const AVFrame& frame) noexcept {
  return static_cast<std::size_t>(frame.nb_samples) *
         static_cast<std::size_t>(av_get_bytes_per_sample(formatOf(frame))) *
         static_cast<std::size_t>(frame.ch_layout.nb_channels);
}

void FrameRun::append(const AVFrame& frame) {
  if (frame.nb_samples <= 0) return;
  if (!takes(frame)) beginPiece(frame);
  AVFrame& piece = *pieces_[used_ - 1];
  av_samples_copy(piece.extended_data, frame.extended_data, piece.nb_samples, 0, frame.nb_samples,
                  frame.ch_layout.nb_channels, formatOf(frame));
  piece.nb_samples += frame.nb_samples;
  frames_ += static_cast<std::size_t>(frame.nb_samples);
  bytes_ += bytesOf(frame);
}

bool FrameRun::takes(const AVFrame& frame) const {
  if (used_ == 0) return false;
  const AVFrame& piece = *pieces_[used_ - 1];
  return haveSameFormat(piece, frame) && frame.nb_samples <= capacityOf(piece) - piece.nb_samples;
}

void FrameRun::beginPiece(const AVFrame& frame) {
  if (used_ == pieces_.size()) pieces_.push_back(makeFrame());
  AVFrame& piece = *pieces_[used_];
  const bool hasRoom = piece.data[0] != nullptr && haveSameFormat(piece, frame) &&
                       frame.nb_samples <= capacityOf(piece);
  if (!hasRoom) {
    av_frame_unref(&piece);
    piece.format = frame.format;
    piece.sample_rate = frame.sample_rate;
    piece.nb_samples = std::max(frame.nb_samples, kPieceFrames);
    if (av_channel_layout_copy(&piece.ch_layout, &frame.ch_layout) < 0 ||
        av_frame_get_buffer(&piece, 0) < 0)
      throw std::bad_alloc();
  }
  piece.nb_samples = 0;
  ++used_;
}

bool FrameRun::endsWith(const FrameRun& other) const {
  if (other.used_ == 0) return false;
  std::size_t i = used_;
  std::size_t k = other.used_;
  int endOfOwn = 0;
  int endOfOther = 0;
  for (;;) {
    if (endOfOther == 0) {
      if (k == 0) return true;
      endOfOther = other.pieces_[--k]->nb_samples;
    }
    if (endOfOwn == 0) {
      if (i == 0) return false;
      endOfOwn = pieces_[--i]->nb_samples;
    }
    const int count = std::min(endOfOwn, endOfOther);
    endOfOwn -= count;
    endOfOther -= count;
    if (!areSame(*pieces_[i], endOfOwn, *other.pieces_[k], endOfOther, count)) return false;
  }
}

bool decodePacket(AVCodecContext& codec, const AVPacket& packet, AVFrame& frame, FrameRun* run) {
  const bool isTaken = avcodec_send_packet(&codec, &packet) >= 0;
  for (;;) {
    const int result = avcodec_receive_frame(&codec, &frame);
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0) return isTaken && result == AVERROR(EAGAIN);
    if (run != nullptr) run->append(frame);
  }
}

}  // namespace orvane
