#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "orvane/container/audio_file.h"
#include "orvane/container/pcm_encoding.h"
#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// What a file really is, against what its name promises.
struct ORVANE_API AudioFileIdentity {
  FourCC containerTypeID = 0;   ///< file type code found in the bytes
  std::string containerName{};  ///< "WAV", "MPEG-4 (M4A)" …, or the code's text
  std::string pathExtension{};  ///< as written, without the dot
  FourCC formatID = 0;          ///< format code of the audio stream: `lpcm`, `aac ` …
  std::optional<PCMEncoding> pcmEncoding{};  ///< linear PCM of known depth only

  bool operator==(const AudioFileIdentity&) const = default;

  /// Looks into a file; absent for what cannot be read or is no audio file. Never throws for
  /// anything that a file can cause.
  static std::optional<AudioFileIdentity> inspect(const std::filesystem::path& url);

  /// The identity that follows from a description already at hand.
  static AudioFileIdentity fromDescription(const AudioFileDescription& description,
                                           const std::filesystem::path& url);

  /// Display name of a container code, or the code's text.
  static std::string containerNameForCode(FourCC code);

  /// Display name of a format code, or the code's text.
  static std::string codecNameForCode(FourCC code);

  /// Texts of the container codes that files with this extension hold, in any case of letters;
  /// absent for an unknown extension.
  static std::optional<std::set<std::string>> expectedContainers(std::string_view extension);

  /// "24-bit integer" for linear PCM, else the codec's name.
  std::string encodingName() const;

  /// The extension promises another container; never for an unknown extension.
  bool isMisnamed() const;

  /// "WAV"; "MP3, named .wav" for a misnamed file.
  std::string formatLabel() const;

  /// The label of a file with this identity; the extension in upper case for one without.
  static std::string formatLabelOf(const std::optional<AudioFileIdentity>& identity,
                                   const std::filesystem::path& url);

  /// Linear PCM in one of the containers that can be written.
  bool isRewritableInPlace() const;
};

}  // namespace orvane
