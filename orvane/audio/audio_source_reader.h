#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/container/audio_file.h"
#include "orvane/platform/error.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/platform/execution.h"
#include "orvane/rawpcm/raw_pcm_format.h"

/// Loads the whole audio of one source into one buffer.
namespace orvane::AudioSourceReader {

/// A loaded source.
struct Loaded {
  /// Planar 32-bit float at the source's rate, as long as the frames read, channels in canonical
  /// order (raw sources: in stored order).
  std::shared_ptr<PCMBuffer> buffer{};
  std::int64_t bitDepth = 0;                ///< bits per sample as stored; 0 for compressed codecs
  std::string fileFormatLabel{};            ///< "WAV", "MP3, named .wav", "RAW s16le"
  std::optional<RawPCMFormat> rawFormat{};  ///< present exactly for a raw source
};

/// A source that cannot be loaded. The text ends with the file's name.
class ORVANE_API Failure : public Error {
 public:
  enum class Case {
    empty,      ///< no channels or no frames
    tooLarge,   ///< beyond `AudioLoadLimits`
    allocation  ///< the memory could not be had
  };

  Failure(Case failureCase, const std::filesystem::path& url);
  ~Failure() override;

  Case failureCase() const noexcept { return case_; }
  const std::filesystem::path& url() const noexcept { return url_; }

  bool operator==(const Failure& other) const { return case_ == other.case_ && url_ == other.url_; }

 private:
  Case case_;
  std::filesystem::path url_;
};

/// How a source is loaded, beside what it is.
struct LoadOptions {
  Execution execution{};
  std::optional<int> streamIndex{};  ///< which audio stream; absent for the default one
  std::vector<AudioFileWarning>* warnings = nullptr;  ///< findings are appended; not owned
};

/// Loads the source at `url`: an audio file, or headerless PCM in `rawFormat` when that is given,
/// whatever the extension. Throws `Failure`, `PlatformError`, or for a raw source
/// `RawPCMImportError`.
ORVANE_API Loaded load(const std::filesystem::path& url,
                       const std::optional<RawPCMFormat>& rawFormat = {});

/// The same with choices of execution. Throws also `Cancelled`.
ORVANE_API Loaded load(const std::filesystem::path& url,
                       const std::optional<RawPCMFormat>& rawFormat, const LoadOptions& options);

}  // namespace orvane::AudioSourceReader
