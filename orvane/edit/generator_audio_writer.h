#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "orvane/core/generator/generator_spec.h"
#include "orvane/platform/atomic_file.h"
#include "orvane/platform/audio_format.h"
#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

/// Renders test signals and saves them as linear PCM.
namespace orvane::GeneratorAudioWriter {

/// A signal that cannot be written.
class ORVANE_API WriterError : public Error {
 public:
  enum class Case {
    unsupportedFormat,  ///< `message()` says what the container cannot hold
    bufferBuildFailed,  ///< of `channelCount()` channels
    writeFailed,        ///< `message()` is the platform's
    noChannels,
    emptyBuffer,
    ragged
  };

  static WriterError unsupportedFormat(const std::string& message);
  static WriterError bufferBuildFailed(std::int64_t channelCount);
  static WriterError writeFailed(const std::string& message);
  /// Of the cases that carry nothing.
  explicit WriterError(Case errorCase);
  ~WriterError() override;

  Case errorCase() const noexcept { return case_; }
  const std::string& message() const noexcept { return message_; }
  std::int64_t channelCount() const noexcept { return channelCount_; }

  bool operator==(const WriterError& other) const {
    return case_ == other.case_ && message_ == other.message_ &&
           channelCount_ == other.channelCount_;
  }

 private:
  WriterError(Case errorCase, std::string message, std::int64_t channelCount,
              const std::string& description);

  Case case_;
  std::string message_{};
  std::int64_t channelCount_ = 0;
};

/// Renders the signal and writes it in the encoding and container that it asks for. A file that
/// stands under the name is replaced, unless `existing` refuses that. Throws
/// `core::GeneratorSpecError` before anything is rendered, and what `write` throws.
ORVANE_API void renderAndWrite(const core::GeneratorSpec& spec, const std::filesystem::path& url,
                               AtomicFile::Existing existing = AtomicFile::Existing::replace);

/// Writes channels × frames of one length, as unlabelled channels in order. Throws `WriterError`,
/// before anything is written for what is wrong with the channels or the format; and
/// `SavedFileError`.
ORVANE_API void write(const std::vector<std::vector<float>>& channelData, double sampleRate,
                      core::GeneratorBitDepth bitDepth, core::GeneratorContainer container,
                      const std::filesystem::path& url,
                      AtomicFile::Existing existing = AtomicFile::Existing::replace);

/// The settings with which such audio is written.
ORVANE_API AudioFormatSettings settings(const AudioFormat& format, core::GeneratorBitDepth bitDepth,
                                        core::GeneratorContainer container);

}  // namespace orvane::GeneratorAudioWriter
