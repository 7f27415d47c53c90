#include "orvane/container/ffmpeg/demuxer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <new>
#include <string>
#include <utility>

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/error.h>
#include <libavutil/intreadwrite.h>
#include <libavutil/mem.h>
}

#include "orvane/container/ffmpeg/formats.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr const char* kNotAudio = "Not an audio file";
constexpr const char* kNotSupported = "The file format is not supported";
constexpr const char* kDamaged = "The file is damaged or incomplete";
constexpr int kMostStreams = 256;
constexpr int kMostRetries = 1000;

bool isCertainlyNoAudio(AVMediaType type) {
  return type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_SUBTITLE ||
         type == AVMEDIA_TYPE_ATTACHMENT;
}

/// WAVE's format tag 0x38 is that of NMS ADPCM, in blocks of 160 samples behind one word; FFmpeg
/// takes it for AMR, whose frames are never so long.
bool isNMSADPCM(const AVCodecParameters& parameters) {
  constexpr std::uint32_t kTag = 0x38;
  return parameters.codec_id == AV_CODEC_ID_AMR_NB && parameters.codec_tag == kTag &&
         (parameters.block_align == 42 || parameters.block_align == 62 ||
          parameters.block_align == 82);
}

/// Whether reading the file brings nothing but one stream's packets.
bool holdsOneStream(const AVFormatContext& format) {
  const auto isPicture = [](const AVStream* stream) {
    return (stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0 ||
           stream->codecpar->codec_type == AVMEDIA_TYPE_ATTACHMENT;
  };
  const auto pictures =
      std::count_if(format.streams, format.streams + format.nb_streams, isPicture);
  const bool mayGainStreams = (format.ctx_flags & AVFMTCTX_NOHEADER) != 0;
  return !mayGainStreams && format.nb_streams - pictures == 1;
}

/// Takes the zeros of a gap off the packet behind which FFmpeg's parser has put them; false when
/// the packet is nothing else. Packets of plain samples may rightly be zero.
bool cutOffGap(AVPacket& packet, AVCodecID codec) {
  constexpr int kLongestFrame = 1 << 20;
  constexpr int kOwnZeros = 16;  // a frame may end in some
  if (packet.size <= kLongestFrame || av_get_exact_bits_per_sample(codec) > 0) return true;
  int size = packet.size;
  while (size > 0 && packet.data[size - 1] == 0) --size;
  av_shrink_packet(&packet, std::min(size + kOwnZeros, packet.size));
  return size > 0;
}

/// Tells the decoder to leave out the first `frames` frames.
void skipFrames(AVPacket& packet, std::int64_t frames) {
  constexpr std::size_t kBytes = 10;  // frames at the start and the end, and a reason for each
  std::uint8_t* side = av_packet_new_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, kBytes);
  if (side == nullptr) throw std::bad_alloc();
  std::fill_n(side, kBytes, std::uint8_t{0});
  AV_WL32(side, static_cast<std::uint32_t>(frames));
}

/// Refuses every further file that a container asks for: external tracks, keys, segments.
int refuseToOpen(AVFormatContext* /*context*/, AVIOContext** /*io*/, const char* /*url*/,
                 int /*flags*/, AVDictionary** /*options*/) {
  return AVERROR(EPERM);
}

/// Bounds each of FFmpeg's allocations by what the largest file opened so far justifies. The
/// largest that real files ask for is an MP4's index, smaller than the packets and tables it points
/// to; a forged one would cost gigabytes. The bound is one for the process and so can only rise.
void allowAllocationsFor(std::uint64_t fileBytes) {
  constexpr std::uint64_t kAlwaysAllowed = std::uint64_t{32} << 20;
  constexpr std::uint64_t kMost = std::uint64_t{1} << 30;
  static std::mutex mutex;
  static std::uint64_t allowed = 0;
  const std::lock_guard lock(mutex);
  const std::uint64_t needed = kAlwaysAllowed + 2 * std::min(fileBytes, kMost);
  if (needed <= allowed) return;
  allowed = needed;
  av_max_alloc(allowed);
}

/// Options of avformat_open_input; freed at the end of the scope.
class Options {
 public:
  Options() = default;
  ~Options() { av_dict_free(&dictionary_); }
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;
  void set(const char* key, const std::string& value) {
    if (av_dict_set(&dictionary_, key, value.c_str(), 0) < 0) throw std::bad_alloc();
  }
  AVDictionary** address() noexcept { return &dictionary_; }

 private:
  AVDictionary* dictionary_ = nullptr;
};

}  // namespace

std::string ffmpegErrorText(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

PacketPointer makePacket() {
  PacketPointer packet(av_packet_alloc());
  if (!packet) throw std::bad_alloc();
  return packet;
}

std::span<const std::uint8_t> bytesOf(const AVPacket& packet) noexcept {
  return {packet.data, static_cast<std::size_t>(std::max(packet.size, 0))};
}

Demuxer::Demuxer(std::shared_ptr<const InputFile> file, const AudioFileOpenOptions& options,
                 FourCC containerHint)
    : source_(std::move(file), options.execution.observer) {
  allowAllocationsFor(source_.file().size());
  open(containerHint);
  chooseStream(options.streamIndex);
  stated_ = statedAudio(this->file(), *format_, *stream_, containerHint);
}

void Demuxer::open(FourCC containerHint) {
  const AVInputFormat* demuxer = demuxerFor(source_.file(), containerHint);
  if (demuxer == nullptr)
    throw PlatformError(path(), containerHint != 0 ? kNotSupported : kNotAudio);

  Options options;
  options.set("format_whitelist", allowedDemuxers());
  options.set("codec_whitelist", allowedDecoders());
  options.set("protocol_whitelist", "file");
  options.set("max_streams", std::to_string(kMostStreams));
  // Its only use is a duration, for which it would read the end of the file.
  options.set("skip_estimate_duration_from_pts", "1");

  AVFormatContext* context = avformat_alloc_context();
  if (context == nullptr) throw std::bad_alloc();
  context->pb = source_.context();
  context->flags |= AVFMT_FLAG_CUSTOM_IO;
  context->io_open = refuseToOpen;
  // On failure the context is freed by the callee, and null.
  const int opened = avformat_open_input(&context, "", demuxer, options.address());
  format_.reset(context);
  source_.rethrowFailure();
  if (opened < 0)
    throw PlatformError(path(), containerHint == 0               ? kNotAudio
                                : opened == AVERROR_PATCHWELCOME ? kNotSupported
                                                                 : kDamaged);
  if (holdsOneStream(*format_)) source_.boundEveryGap();

  // Transport streams may carry audio whose kind is only found by probing its packets.
  for (unsigned i = 0; i < format_->nb_streams; ++i)
    if (isCertainlyNoAudio(format_->streams[i]->codecpar->codec_type))
      format_->streams[i]->discard = AVDISCARD_ALL;
  const int found = avformat_find_stream_info(format_.get(), nullptr);
  source_.rethrowFailure();
  if (found < 0) throw PlatformError(path(), ffmpegErrorText(found));
}

void Demuxer::chooseStream(std::optional<int> streamIndex) {
  int audioStreams = 0;
  for (unsigned i = 0; i < format_->nb_streams; ++i) {
    AVStream* stream = format_->streams[i];
    stream->discard = AVDISCARD_ALL;
    if (stream->codecpar->codec_type != AVMEDIA_TYPE_AUDIO) continue;
    if (streamIndex && *streamIndex == audioStreams) stream_ = stream;
    ++audioStreams;
  }
  if (audioStreams == 0) throw PlatformError(path(), "The file holds no audio");
  if (!streamIndex) {
    const int best = av_find_best_stream(format_.get(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (best >= 0) stream_ = format_->streams[best];
  }
  if (stream_ == nullptr)
    throw PlatformError(path(), "There is no audio stream " +
                                    std::to_string(streamIndex.value_or(0)) + "; the file holds " +
                                    std::to_string(audioStreams));
  stream_->discard = AVDISCARD_DEFAULT;
  if (isNMSADPCM(*stream_->codecpar)) stream_->codecpar->codec_id = AV_CODEC_ID_NONE;
  codec_ = avcodec_find_decoder(stream_->codecpar->codec_id);
}

double Demuxer::shareRead() const noexcept {
  const auto size = static_cast<double>(file().size());
  return size > 0 ? std::clamp(static_cast<double>(avio_tell(format_->pb)) / size, 0.0, 1.0) : 1.0;
}

bool Demuxer::read(AVPacket& packet) {
  if (ahead_.empty()) return !hasEnded_ && readFromFile(packet);
  av_packet_unref(&packet);
  av_packet_move_ref(&packet, ahead_.front().get());
  ahead_.pop_front();
  return true;
}

const AVPacket* Demuxer::peek(std::size_t index) {
  while (ahead_.size() <= index && !hasEnded_) {
    PacketPointer packet = makePacket();
    if (readFromFile(*packet))
      ahead_.push_back(std::move(packet));
    else
      hasEnded_ = true;
  }
  return index < ahead_.size() ? ahead_[index].get() : nullptr;
}

void Demuxer::drop(std::size_t count) noexcept {
  ahead_.erase(ahead_.begin(), ahead_.begin() + static_cast<std::ptrdiff_t>(count));
}

bool Demuxer::readFromFile(AVPacket& packet) {
  for (int retries = 0; retries < kMostRetries;) {
    av_packet_unref(&packet);
    const int result = av_read_frame(format_.get(), &packet);
    source_.rethrowFailure();
    if (result == AVERROR(EAGAIN)) {
      ++retries;
      continue;
    }
    if (result < 0) {
      isTruncated_ = isTruncated_ || result != AVERROR_EOF;
      return false;
    }
    source_.notePacket();
    if (packet.stream_index != stream_->index) continue;
    if (!cutOffGap(packet, stream_->codecpar->codec_id)) continue;
    if (!std::exchange(isPrimed_, true) && stated_.priming > 0) skipFrames(packet, stated_.priming);
    // A packet that the file's end cuts short.
    if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0) isTruncated_ = true;
    return true;
  }
  return false;
}

}  // namespace orvane
