#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// A finished PDF of which the renderer checks and corrects a few places, found by its table of
/// cross-references (ISO 32000-1, 7.5.4) and so never inside a text or a stream. Understands what
/// browsers write: one table, objects outside of compressed streams.
class ORVANE_TESTING_API PDFDocument {
 public:
  /// Throws `BrowserError` (invalidPDF) when the bytes are no such document.
  explicit PDFDocument(std::vector<std::byte> bytes);

  int pageCount() const noexcept { return pageCount_; }

  /// Sets both dates of the document to a time in seconds since 1970, UTC.
  void setDates(std::int64_t secondsSince1970);

  /// The document with the box of its only page made exactly [0 0 width height], in points, and
  /// what is drawn on it beginning at the upper edge of that box. Throws `BrowserError`
  /// (invalidPDF) when there is no box to correct or it is off by more than a point.
  std::vector<std::byte> withPageOf(int width, int height) &&;

 private:
  std::string_view text() const noexcept;
  std::string_view objectAt(std::string_view reference) const;
  std::string_view firstPage() const;
  std::string updateWithRaisedPage(double distance) const;
  void overwrite(std::string_view place, std::string_view value);

  std::vector<std::byte> bytes_;
  std::size_t tableOffset_ = 0;
  std::string_view table_{};
  std::string_view trailer_{};
  std::string_view pages_{};
  int pageCount_ = 0;
};

}  // namespace orvane
