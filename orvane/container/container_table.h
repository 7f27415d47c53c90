#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "orvane/container/audio_container.h"
#include "orvane/container/chapter_mark.h"
#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// Fixed bytes at one or two fixed places, by which a container is known.
struct Signature {
  std::size_t offset = 0;
  std::string_view bytes{};
  std::size_t secondOffset = 0;
  std::string_view secondBytes{};
};

/// All that is said once of a kind of audio file.
struct ContainerKind {
  /// Core Audio's file type code, or one of our own for what Core Audio does not have.
  FourCC code = 0;
  std::string_view name{};             ///< to be shown; empty: the code's text
  std::string_view extensions{};       ///< its own, between blanks, lower case
  std::string_view otherExtensions{};  ///< others that do not make a file of this kind misnamed
  std::initializer_list<Signature> signatures{};
  /// Reads the header of a file that begins at `start`. Throws `PlatformError` for what is cut
  /// short or says nothing of its audio. Null: FFmpeg reads the file.
  PCMStream (*parse)(const InputFile& file, std::uint64_t start) = nullptr;
  /// The places that the file's chunks name; null: there is nothing of the sort.
  std::vector<ChapterMark> (*markers)(const InputFile& file, const PCMStream& stream) = nullptr;
  /// The case of `AudioContainer` that it is, where files of the kind are written.
  std::optional<AudioContainer> writable{};
  /// The bytes around the samples of a new file. Throws `UnwritableFormat`.
  PCMFileOutline (*outline)(const PCMFileSpecification& specification) = nullptr;
  /// FFmpeg's demuxer, where it is not left to FFmpeg to find one by the file's bytes.
  const char* demuxer = nullptr;
};

/// Every kind of file that is known by a signature, a name or a reader of our own.
ORVANE_API std::span<const ContainerKind> containerKinds() noexcept;

/// The row of a code; null when there is none.
ORVANE_API const ContainerKind* containerKind(FourCC code) noexcept;

/// Whether `word` stands in a list of words between blanks.
ORVANE_TESTING_API bool holdsWord(std::string_view list, std::string_view word) noexcept;

}  // namespace orvane
