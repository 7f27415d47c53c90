#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/container/chapter_mark.h"
#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// A chapter list that cannot be read; the text names the line or the key that is wrong.
class ORVANE_API ChapterListError : public Error {
 public:
  explicit ChapterListError(const std::string& description) : Error(description) {}
  ~ChapterListError() override;
};

/// Chapter lists in text files, as UTF-8 or, with its byte-order mark, UTF-16. Times are seconds
/// or, but in JSON, [h:]mm:ss[.fff].
namespace ChapterList {

enum class Format {
  /// A report or its chapter table, or an array of chapters, bare or under "chapters". A chapter is
  /// an object with a start ("startSec", "startTime" or "start", a number) and, if it has them, an
  /// end and a name ("name" or "title").
  json,
  /// Comma-separated values (RFC 4180), columns found by the names "start", "end" and "name" or
  /// "label" or "title" of the header; those of the product's own chapter table are understood.
  /// Without a header they are start, end and name. Ends may be missing.
  csv,
  /// A label track of the audio editor Audacity; a label without length lasts until the next one.
  audacityLabels,
  /// A cue sheet (CD-RWIN): the titles of its audio tracks at their INDEX 01, in frames of 1/75 s.
  /// It may be in ISO 8859-1.
  cueSheet,
};

/// More chapters than any file has.
inline constexpr std::size_t kMaximumChapters = 10'000;

/// What a text seems to be.
ORVANE_API Format formatOf(std::string_view text);

/// What a report tells about where chapters came from: "imported" for JSON, "imported (CSV)" …
ORVANE_API std::string_view origin(Format format) noexcept;

/// The marks in the order of the list, at least one. Throws `ChapterListError`.
ORVANE_API std::vector<ChapterMark> read(std::string_view text, Format format);

}  // namespace ChapterList
}  // namespace orvane
