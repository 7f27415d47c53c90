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

/// `--container`, `--encoding` and `--dither`.
void addAudioFormatOptions(CLI::App& command, AudioOutputOptions& options);

/// "wav", "rf64", "bw64", "w64", "aiff", "aifc", "caf"; absent for other names.
std::optional<AudioContainer> audioContainerFromName(std::string_view name);

}  // namespace orvane::cli
