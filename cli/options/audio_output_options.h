#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/audio/audio_source.h"
#include "orvane/container/audio_container.h"
#include "orvane/container/pcm_encoding.h"

namespace orvane::cli {

/// Where audio is written to, and as what.
struct AudioOutputOptions {
  std::string file{};
  std::optional<AudioContainer> container{};  ///< of `--container`
  std::optional<PCMEncoding> encoding{};      ///< of `--encoding`
  bool dither = false;
  bool dryRun = false;
  bool json = false;
  bool force = false;
  bool quiet = false;
  bool inPlace = false;  ///< into the source itself, with no file of its own
  bool backup = false;   ///< of the source, before
  bool updateLoudness = false;

  /// The encoding by `--encoding`, else the source's; 24-bit integers for compressed sources.
  PCMEncoding encodingFor(const AudioSource& source) const;

  /// The container by `--container`, else by the file's extension, else `otherwise`. An AIFF that
  /// nobody asked for by name becomes AIFF-C where floats are to be stored. Throws `UsageError` for
  /// the extension of audio files that cannot be written.
  AudioContainer containerFor(const PCMEncoding& stored, AudioContainer otherwise) const;
};

/// `-o`, which is required unless there is another place to write to, `--dry-run`, `--json`,
/// `--force` and `--quiet`. `options` must outlive the command.
void addAudioOutputOptions(CLI::App& command, AudioOutputOptions& options, bool isRequired = true);

/// `--in-place` and `--backup`, for a source that the help calls `source`.
void addInPlaceOptions(CLI::App& command, AudioOutputOptions& options, const std::string& source);

/// `--update-loudness`.
void addLoudnessOption(CLI::App& command, AudioOutputOptions& options);

/// Throws `UsageError` unless just one of `-o` and `--in-place` says where the audio of a source
/// goes, or for what does not go with it.
void requireDestination(const AudioOutputOptions& options, bool isHeaderless);

/// `--container`, `--encoding` and `--dither`.
void addAudioFormatOptions(CLI::App& command, AudioOutputOptions& options);

/// "wav", "rf64", "bw64", "w64", "aiff", "aifc", "caf"; absent for other names.
std::optional<AudioContainer> audioContainerFromName(std::string_view name);

}  // namespace orvane::cli
