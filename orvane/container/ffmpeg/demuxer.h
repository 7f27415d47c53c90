#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "orvane/container/audio_file.h"
#include "orvane/container/ffmpeg/byte_source.h"
#include "orvane/container/ffmpeg/stated_audio.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// FFmpeg's text for one of its error numbers.
std::string ffmpegErrorText(int code);

struct FreePacket {
  void operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
};
using PacketPointer = std::unique_ptr<AVPacket, FreePacket>;
PacketPointer makePacket();
std::span<const std::uint8_t> bytesOf(const AVPacket& packet) noexcept;

/// A file opened for its audio: container parsed, one audio stream chosen, packets in file order.
class Demuxer {
 public:
  /// Of the options the stream counts (absent chooses the default one, else the best) and the
  /// observer. Throws `PlatformError`, and `Cancelled` when the observer asks for it.
  Demuxer(std::shared_ptr<const InputFile> file, const AudioFileOpenOptions& options,
          FourCC containerHint);

  const std::filesystem::path& path() const noexcept { return source_.file().path(); }
  const InputFile& file() const noexcept { return source_.file(); }
  const AVFormatContext& format() const noexcept { return *format_; }
  AVStream& stream() const noexcept { return *stream_; }
  /// The stream's decoder; null when FFmpeg has none.
  const AVCodec* codec() const noexcept { return codec_; }
  /// What the container says beside. The priming is taken off by the decoder, as the first packet
  /// tells it.
  const StatedAudio& stated() const noexcept { return stated_; }

  /// Replaces `packet` by the chosen stream's next one; false at the end. Throws `PlatformError`
  /// when the file cannot be read, and `Cancelled`; a container that breaks off is an end, and so
  /// is one that goes on without any packet.
  bool read(AVPacket& packet);

  /// The packet that `read` will give after `index` others; null behind the last one. Reads ahead
  /// as far as that needs, and throws as `read` does.
  const AVPacket* peek(std::size_t index);

  /// Passes over the next `count` packets, which `peek` has given.
  void drop(std::size_t count) noexcept;

  /// How far into the file the reading has come, 0 … 1.
  double shareRead() const noexcept;

  /// Whether the container broke off instead of ending.
  bool isTruncated() const noexcept { return isTruncated_ || source_.hasEndedInGap(); }

 private:
  struct CloseInput {
    void operator()(AVFormatContext* context) const noexcept { avformat_close_input(&context); }
  };

  void open(FourCC containerHint);
  void chooseStream(std::optional<int> streamIndex);
  bool readFromFile(AVPacket& packet);

  ByteSource source_;
  std::unique_ptr<AVFormatContext, CloseInput> format_{};
  AVStream* stream_ = nullptr;
  const AVCodec* codec_ = nullptr;
  StatedAudio stated_{};
  std::deque<PacketPointer> ahead_{};  ///< read before they were asked for
  bool hasEnded_ = false;              ///< as reading ahead has found
  bool isPrimed_ = false;              ///< the first packet has been read
  bool isTruncated_ = false;
};

}  // namespace orvane
