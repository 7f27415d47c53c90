#include "orvane/container/flac/flac_decoder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <new>
#include <string_view>
#include <utility>

#include "orvane/container/sniff/id3v2_tag.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// No block is as long. What lies between two blocks is passed over up to here.
constexpr std::uint64_t kMostGapBytes = std::uint64_t{16} << 20;

/// A block begins with so many bytes that are like in all of a stream (RFC 9639, 9.1).
constexpr std::uint64_t kMarkBytes = 2;

/// The number behind "WAVEFORMATEXTENSIBLE_CHANNEL_MASK=0x", RFC 9639, 8.6.2.
std::optional<std::uint32_t> channelMaskIn(std::string_view comment) {
  constexpr std::string_view kName = "WAVEFORMATEXTENSIBLE_CHANNEL_MASK=";
  const auto isSameLetter = [](char a, char b) { return (a >= 'a' && a <= 'z' ? a - 32 : a) == b; };
  if (comment.size() <= kName.size() ||
      !std::equal(kName.begin(), kName.end(), comment.begin(),
                  [&](char name, char letter) { return isSameLetter(letter, name); }))
    return std::nullopt;
  comment.remove_prefix(kName.size());
  int base = 10;
  if (comment.starts_with("0x") || comment.starts_with("0X")) {
    comment.remove_prefix(2);
    base = 16;
  }
  std::uint32_t mask = 0;
  const char* const end = comment.data() + comment.size();
  const auto [stop, error] = std::from_chars(comment.data(), end, mask, base);
  return error == std::errc() && stop == end ? std::optional(mask) : std::nullopt;
}

}  // namespace

/// What libFLAC calls. Nothing may be thrown through it.
struct FLACDecoder::Callbacks {
  static FLACDecoder& self(void* client) { return *static_cast<FLACDecoder*>(client); }

  template <typename Action>
  static bool guarded(void* client, const Action& action) noexcept {
    try {
      action();
      return true;
    } catch (...) {
      self(client).failure_ = std::current_exception();
      return false;
    }
  }

  static FLAC__StreamDecoderReadStatus read(const FLAC__StreamDecoder* /*decoder*/,
                                            FLAC__byte* destination, std::size_t* size,
                                            void* client) {
    std::size_t count = 0;
    if (!guarded(client, [&] {
          count = self(client).read({reinterpret_cast<std::byte*>(destination), *size});
        }))
      return FLAC__STREAM_DECODER_READ_STATUS_ABORT;
    *size = count;
    return count > 0 ? FLAC__STREAM_DECODER_READ_STATUS_CONTINUE
                     : FLAC__STREAM_DECODER_READ_STATUS_END_OF_STREAM;
  }

  static FLAC__StreamDecoderTellStatus tell(const FLAC__StreamDecoder* /*decoder*/,
                                            FLAC__uint64* position, void* client) {
    *position = self(client).position_;
    return FLAC__STREAM_DECODER_TELL_STATUS_OK;
  }

  static FLAC__StreamDecoderSeekStatus seek(const FLAC__StreamDecoder* /*decoder*/,
                                            FLAC__uint64 position, void* client) {
    self(client).position_ = position;
    return FLAC__STREAM_DECODER_SEEK_STATUS_OK;
  }

  static FLAC__StreamDecoderLengthStatus length(const FLAC__StreamDecoder* /*decoder*/,
                                                FLAC__uint64* length, void* client) {
    *length = self(client).file_->size();
    return FLAC__STREAM_DECODER_LENGTH_STATUS_OK;
  }

  static FLAC__bool isAtEnd(const FLAC__StreamDecoder* /*decoder*/, void* client) {
    return self(client).position_ >= self(client).file_->size() ? 1 : 0;
  }

  static FLAC__StreamDecoderWriteStatus write(const FLAC__StreamDecoder* /*decoder*/,
                                              const FLAC__Frame* frame,
                                              const FLAC__int32* const channels[], void* client) {
    bool goesOn = false;
    guarded(client, [&] { goesOn = self(client).write(*frame, channels); });
    return goesOn ? FLAC__STREAM_DECODER_WRITE_STATUS_CONTINUE
                  : FLAC__STREAM_DECODER_WRITE_STATUS_ABORT;
  }

  static void metadata(const FLAC__StreamDecoder* /*decoder*/, const FLAC__StreamMetadata* metadata,
                       void* client) {
    guarded(client, [&] { self(client).describe(*metadata); });
  }

  static void error(const FLAC__StreamDecoder* /*decoder*/,
                    FLAC__StreamDecoderErrorStatus /*status*/, void* client) {
    self(client).isDamagePending_ = true;
  }
};

FLACDecoder::FLACDecoder(std::shared_ptr<const InputFile> file, ProgressObserver* observer,
                         bool verifies)
    : file_(std::move(file)),
      observer_(observer),
      verifies_(verifies),
      decoder_(FLAC__stream_decoder_new()),
      position_(endOfID3v2Tags(*file_)) {
  if (!decoder_) throw std::bad_alloc();
}

std::optional<FLACStreamInfo> FLACDecoder::readInfo() {
  FLAC__stream_decoder_set_md5_checking(decoder_.get(), verifies_ ? 1 : 0);
  FLAC__stream_decoder_set_metadata_respond(decoder_.get(), FLAC__METADATA_TYPE_VORBIS_COMMENT);
  if (FLAC__stream_decoder_init_stream(decoder_.get(), Callbacks::read, Callbacks::seek,
                                       Callbacks::tell, Callbacks::length, Callbacks::isAtEnd,
                                       Callbacks::write, Callbacks::metadata, Callbacks::error,
                                       this) != FLAC__STREAM_DECODER_INIT_STATUS_OK)
    throw std::bad_alloc();
  if (!process(FLAC__stream_decoder_process_until_end_of_metadata) || !hasInfo_ ||
      info_.sampleRate == 0)
    return std::nullopt;
  isInAudio_ = true;
  isDamagePending_ = false;
  return info_;
}

bool FLACDecoder::next(const Take& take) {
  take_ = &take;
  hasTaken_ = false;
  isSearching_ = false;
  while (!hasTaken_) {
    if (process(FLAC__stream_decoder_process_single)) continue;
    if (!std::exchange(isFilling_, false)) return false;
    // Behind the mark of the block that is damaged, with nothing to be filled up.
    isSearching_ = true;
    FLAC__stream_decoder_flush(decoder_.get());
    position_ = blockEnd_ + kMarkBytes;
    sinceBlock_ = 0;
  }
  FLAC__stream_decoder_get_decode_position(decoder_.get(), &blockEnd_);
  return true;
}

bool FLACDecoder::seek(std::int64_t frame, const Take& take) {
  take_ = &take;
  hasTaken_ = false;
  sinceBlock_ = 0;
  const bool isFound =
      FLAC__stream_decoder_seek_absolute(decoder_.get(), static_cast<FLAC__uint64>(frame)) != 0;
  rethrowFailure();
  FLAC__stream_decoder_get_decode_position(decoder_.get(), &blockEnd_);
  return isFound && hasTaken_;
}

void FLACDecoder::rethrowFailure() {
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  if (FLAC__stream_decoder_get_state(decoder_.get()) ==
      FLAC__STREAM_DECODER_MEMORY_ALLOCATION_ERROR)
    throw std::bad_alloc();
}

/// False at the end, and where libFLAC cannot go on.
bool FLACDecoder::process(FLAC__bool (*step)(FLAC__StreamDecoder*)) {
  const bool isDone = step(decoder_.get()) != 0;
  rethrowFailure();
  const auto state = FLAC__stream_decoder_get_state(decoder_.get());
  return isDone && state != FLAC__STREAM_DECODER_END_OF_STREAM &&
         state != FLAC__STREAM_DECODER_ABORTED;
}

std::size_t FLACDecoder::read(std::span<std::byte> destination) {
  if (observer_ != nullptr && observer_->isCancelled()) throw Cancelled();
  if (isInAudio_ && sinceBlock_ > kMostGapBytes) return 0;
  const std::size_t count = file_->readAt(position_, destination);
  position_ += count;
  sinceBlock_ += count;
  return count;
}

/// False to stop the decoding.
bool FLACDecoder::write(const FLAC__Frame& frame, const FLAC__int32* const* channels) {
  const FLAC__FrameHeader& header = frame.header;
  // libFLAC puts silence into the place of blocks that it has lost, and overwrites the next sound
  // one with it. That one is searched for anew.
  isFilling_ = isDamagePending_ && blockEnd_ > 0 && !isSearching_;
  if (isFilling_) return false;
  sinceBlock_ = 0;
  if (header.channels != info_.channelCount || header.sample_rate != info_.sampleRate)
    throw PlatformError(file_->path(), "The audio format changes in mid-stream");
  hasMetDamage_ = hasMetDamage_ || std::exchange(isDamagePending_, false);
  hasTaken_ = true;
  (*take_)({.channels = {channels, header.channels},
            .frameCount = header.blocksize,
            .bitsPerSample = header.bits_per_sample});
  return true;
}

void FLACDecoder::describe(const FLAC__StreamMetadata& metadata) {
  if (metadata.type == FLAC__METADATA_TYPE_STREAMINFO) {
    const auto& stated = metadata.data.stream_info;
    hasInfo_ = true;
    info_.sampleRate = stated.sample_rate;
    info_.channelCount = stated.channels;
    info_.bitsPerSample = stated.bits_per_sample;
    info_.frameCount = static_cast<std::int64_t>(stated.total_samples);
    info_.statesMD5 = std::ranges::any_of(stated.md5sum, [](FLAC__byte byte) { return byte != 0; });
    return;
  }
  if (metadata.type != FLAC__METADATA_TYPE_VORBIS_COMMENT) return;
  const auto& comments = metadata.data.vorbis_comment;
  for (const auto& comment : std::span(comments.comments, comments.num_comments))
    if (const auto mask =
            channelMaskIn({reinterpret_cast<const char*>(comment.entry), comment.length}))
      info_.channelMask = mask;
}

bool FLACDecoder::breaksOff() const {
  if (sinceBlock_ > kMostGapBytes) return true;
  // Behind the last whole block another one begins, RFC 9639, 9.1.
  std::array<std::byte, 2> sync{};
  return file_->readAt(blockEnd_, sync) == sync.size() && sync[0] == std::byte{0xFF} &&
         (sync[1] & std::byte{0xFE}) == std::byte{0xF8};
}

bool FLACDecoder::finishMD5() {
  // Having lost a block libFLAC no longer compares.
  return FLAC__stream_decoder_finish(decoder_.get()) != 0 && !hasMetDamage_;
}

double FLACDecoder::shareRead() const noexcept {
  return static_cast<double>(position_) /
         static_cast<double>(std::max<std::uint64_t>(file_->size(), 1));
}

}  // namespace orvane
