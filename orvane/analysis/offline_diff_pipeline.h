#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/analysis/alignment_search.h"
#include "orvane/container/audio_file.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/channel_layout.h"
#include "orvane/platform/error.h"
#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/rawpcm/raw_pcm_format.h"

/// The null test: subtracts one rendering of a programme from another, sample by sample, and
/// measures what remains. Both count from their first sample; nothing is aligned.
namespace orvane::OfflineDiffPipeline {

struct Options {
  bool matchLoudness = false;                ///< bring B to A's integrated loudness first
  std::optional<RawPCMFormat> rawFormatA{};  ///< present: A is headerless PCM
  std::optional<RawPCMFormat> rawFormatB{};  ///< the same of B

  bool operator==(const Options&) const = default;
};

struct Result {
  /// The residual A − gain·B in A's format, as long as the shorter file.
  std::shared_ptr<PCMBuffer> buffer{};
  double sampleRate = 0;  ///< Hz
  std::int64_t channelCount = 0;
  double durationSeconds = 0;  ///< of the residual
  float residualPeakDB = 0;    ///< dBFS, over all channels; minus infinity for an exact null
  float residualRMSDB = 0;     ///< dBFS, over all channels; not below −200, not finite where a
                               ///< sample of the residual is not
  float appliedGainB = 1;      ///< linear; 1 unless both loudnesses are finite and to be matched
};

/// Files that cannot be compared.
class ORVANE_API Failure : public Error {
 public:
  enum class Case { sampleRateMismatch, channelCountMismatch, emptyFile, fileTooLarge };

  static Failure sampleRateMismatch(double a, double b);
  static Failure channelCountMismatch(std::int64_t a, std::int64_t b);
  static Failure emptyFile(const std::filesystem::path& url);
  static Failure fileTooLarge(const std::filesystem::path& url);
  ~Failure() override;

  Case failureCase() const noexcept { return case_; }

  /// Equal texts come of equal payloads.
  bool operator==(const Failure& other) const {
    return case_ == other.case_ && errorDescription() == other.errorDescription();
  }

 private:
  Failure(Case failureCase, std::string description);

  Case case_;
};

/// Compares the sources at `a` and `b`. Both are in memory at a time; where that would exceed
/// `AudioLoadLimits::maxDecodedBytes`, B is `fileTooLarge`. Throws `Failure` and what
/// `AudioSourceReader::load` throws.
ORVANE_API Result computeDiff(const std::filesystem::path& a, const std::filesystem::path& b,
                              const Options& options);

/// What a host may choose beside the options.
struct Choices {
  Execution execution{};
  std::optional<int> streamIndex{};  ///< which audio stream of both; absent for the default one
};

/// Findings beside the result.
struct Detail {
  struct Source {
    std::int64_t frameLength = 0;
    std::optional<ChannelLayout> layout{};
    std::vector<AudioFileWarning> warnings{};
  };
  Source a{};
  Source b{};
  float rmsDBOfA = 0;  ///< of what is compared, in the manner of `residualRMSDB`
  /// Present where the files look shifted against each other, see `AlignmentSearch::find`.
  std::optional<AlignmentSearch::Offset> offset{};
};

/// The same with choices; fills `detail` when it is given, and only then looks for an offset. The
/// stages are "Reading" (once per source), "Measuring" when loudness is matched, and "Comparing".
/// Throws also `Cancelled`.
ORVANE_API Result computeDiff(const std::filesystem::path& a, const std::filesystem::path& b,
                              const Options& options, const Choices& choices,
                              Detail* detail = nullptr);

/// Writes a residual as a WAV file of 32-bit floats, RF64 beyond 4 GiB. Throws `PlatformError`.
ORVANE_API void writeWAV(const PCMBuffer& buffer, const std::filesystem::path& url,
                         AtomicFile::Existing existing = AtomicFile::Existing::replace);

/// The bytes of that file, by way of a file in the folder for temporary files that only its owner
/// may read and that is gone afterwards, whatever happens. Throws `PlatformError`.
ORVANE_API std::vector<std::byte> wavData(const PCMBuffer& buffer);

}  // namespace orvane::OfflineDiffPipeline
