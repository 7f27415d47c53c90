#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// The containers of uncompressed audio that can be written and rewritten.
enum class AudioContainer { wave, rf64, bw64, wave64, aiff, aifc, caf };

/// All of them, in the order in which every lookup tries them.
inline constexpr std::array kAllAudioContainers = {
    AudioContainer::wave, AudioContainer::rf64, AudioContainer::bw64, AudioContainer::wave64,
    AudioContainer::aiff, AudioContainer::aifc, AudioContainer::caf};

/// The file type code: `WAVE`, `RF64`, `W64f` …
ORVANE_API FourCC fileTypeID(AudioContainer container) noexcept;

/// The container of a file type code; absent for every other code.
ORVANE_API std::optional<AudioContainer> audioContainerFromFileTypeID(FourCC code) noexcept;

/// The container that an extension without its dot stands for, in any case of letters; absent for
/// an unknown one.
ORVANE_API std::optional<AudioContainer> audioContainerFromExtension(std::string_view extension);

/// "WAV", "AIFF-C" …
ORVANE_API std::string_view displayName(AudioContainer container) noexcept;

/// Whether samples are stored big-endian: AIFF and AIFF-C.
ORVANE_API bool isBigEndian(AudioContainer container) noexcept;

/// The container that can hold the encoding: AIFF-C for floating point in AIFF, else the same.
ORVANE_API AudioContainer accommodating(AudioContainer container, bool isFloat) noexcept;

/// The code of the container that a file really is, found from its bytes; absent for what cannot be
/// read or is no audio file.
ORVANE_API std::optional<FourCC> fileTypeIDOfFile(const std::filesystem::path& url);

/// The container that a file really is; absent when it is none of the seven.
ORVANE_API std::optional<AudioContainer> audioContainerOfFile(const std::filesystem::path& url);

/// The four characters of a code, without spaces around them; the decimal number when one of them
/// is not printable ASCII (32 … 126).
ORVANE_API std::string fourCC(FourCC code);

}  // namespace orvane
