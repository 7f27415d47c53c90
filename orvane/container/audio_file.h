#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/chapter_mark.h"
#include "orvane/platform/audio_format.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/input_file.h"
#include "orvane/platform/pcm_buffer.h"

namespace orvane {

/// A finding about a curious but usable file.
struct AudioFileWarning {
  enum class Code {
    truncatedAudio,     ///< the header promises more audio than the file holds
    openDataSize,       ///< the header leaves the size open; everything to the end is taken
    severalDataChunks,  ///< only the first one is used
    unusualLayout,      ///< chunks in an unusual order or the like
    damagedAudio,       ///< parts could not be decoded and are left out
  };
  Code code{};
  std::string text{};  ///< one sentence for the user

  bool operator==(const AudioFileWarning&) const = default;
};

/// What an audio file really holds, found from its bytes alone.
struct AudioFileDescription {
  FourCC fileTypeID = 0;           ///< container code: `WAVE`, `caff`, `m4af` …
  StreamDescription dataFormat{};  ///< of the chosen audio stream
  std::optional<ChannelLayout> layout{};
  /// Bits of the original audio for lossless codecs that carry it (FLAC, ALAC …), else 0.
  int sourceBitDepth = 0;
  std::vector<AudioFileWarning> warnings{};

  bool operator==(const AudioFileDescription&) const = default;
};

struct AudioFileOpenOptions {
  /// Which audio stream of a file with several, counted from 0; absent for the default one.
  std::optional<int> streamIndex{};
  /// Whether reading also makes the checksum that the file states of its audio, see
  /// `AudioFile::checksumHolds`.
  bool verifiesChecksum = false;
  /// The stage is "Reading", a share of the frames.
  Execution execution{};
};

/// The platform's audio-file service for reading. PCM containers are read by parsers of our own,
/// FLAC and MP3 by libraries of their own, everything else by FFmpeg.
class ORVANE_API AudioFile {
 public:
  virtual ~AudioFile();

  /// Opens by the file's bytes, whatever its extension. Throws `PlatformError` for what cannot be
  /// read or is no audio file.
  static std::unique_ptr<AudioFile> open(const std::filesystem::path& path,
                                         const AudioFileOpenOptions& options = {});

  /// The same of a file that is open already; everything is read through it.
  static std::unique_ptr<AudioFile> open(std::shared_ptr<const InputFile> file,
                                         const AudioFileOpenOptions& options = {});

  const InputFile& file() const noexcept { return *file_; }

  /// What `open` would find, without preparing to decode. Throws as `open` does, but tells also of
  /// audio that cannot be decoded. `observer`, which may be null, is only asked whether to go on.
  static AudioFileDescription describe(const std::filesystem::path& path,
                                       ProgressObserver* observer = nullptr);

  /// Reading a compressed file may add warnings.
  virtual const AudioFileDescription& description() const noexcept = 0;

  /// Exact length in frames; may be 0. Where it is not known, the first call walks through the
  /// whole file, so that what only reads to the end should not ask. Throws `PlatformError`.
  virtual std::int64_t frameLength() = 0;

  /// Whether `frameLength` has its answer at hand.
  virtual bool knowsFrameLength() const noexcept = 0;

  /// What the header makes expect, right or wrong. Absent when it says nothing.
  virtual std::optional<std::int64_t> expectedFrameLength() const = 0;

  /// The chapters that the file itself holds, in the order of their starts, at most
  /// `kMaximumEmbeddedChapters`: the cue points of WAVE, RF64 and BW64 with their labels and
  /// regions, the markers of AIFF and CAF, and the chapters of what FFmpeg reads: MP4, Matroska,
  /// MP3 with ID3 tags, Ogg, FLAC. Names that are not UTF-8 are taken for ISO 8859-1. Damaged
  /// markers are passed over. Throws `PlatformError` for a file that cannot be read.
  std::vector<ChapterMark> chapters() const;

  /// What FFmpeg reads of title, artist and the like, by its names in lower case, sorted; "picture"
  /// for a cover. None of files whose chunks hold them, see `sideChunks`.
  virtual std::vector<std::string> tagNames() const { return {}; }

  /// Planar float at the file's own rate, channels in stored order.
  AudioFormat processingFormat() const;

  /// The stored format in the form that writers take.
  AudioFormatSettings fileFormat() const;

  /// Reads the next frames into `buffer`, from its start, up to its capacity, and sets its frame
  /// length; 0 at the end. May deliver fewer than asked for before the end. Throws `PlatformError`.
  virtual void read(PCMBuffer& buffer) = 0;

  /// Whether the audio, read to its end, is the one that was encoded: has the MD5 that a FLAC
  /// states. Absent where none is stated or was not to be verified, and before the end.
  virtual std::optional<bool> checksumHolds() const noexcept { return std::nullopt; }

 protected:
  explicit AudioFile(std::shared_ptr<const InputFile> file);
  const std::shared_ptr<const InputFile>& sharedFile() const noexcept { return file_; }

 private:
  virtual std::vector<ChapterMark> unsortedChapters() const = 0;

  std::shared_ptr<const InputFile> file_;
};

/// `AudioFile::describe`; absent for what cannot be read or is no audio file.
ORVANE_API std::optional<AudioFileDescription> describeAudioFile(const std::filesystem::path& path);

/// Version of the FFmpeg that reads compressed files; absent when its module cannot be loaded.
ORVANE_API std::optional<std::string> ffmpegVersion();

}  // namespace orvane
