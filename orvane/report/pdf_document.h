#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// The few places of a finished PDF that the renderer checks and corrects, found by its table of
/// cross-references (ISO 32000-1, 7.5.4) and so never inside a text or a stream. Corrections keep
/// every length, so that the table stays true. Understands what browsers write: objects outside of
/// compressed streams.
class ORVANE_TESTING_API PDFDocument {
 public:
  /// `bytes` are corrected in place and must outlive this. Throws `BrowserError` (invalidPDF) when
  /// they are no such document.
  explicit PDFDocument(std::span<std::byte> bytes);

  int pageCount() const noexcept { return pageCount_; }

  /// Makes the only page's box exactly [0 0 width height], in points. Throws `BrowserError`
  /// (invalidPDF) when there is no box to correct or it is off by more than a point.
  void setPageBox(int width, int height);

  /// Sets both dates of the document to a time in seconds since 1970, UTC.
  void setDates(std::int64_t secondsSince1970);

 private:
  std::string_view text() const noexcept;
  std::string_view objectAt(std::string_view reference) const;
  std::string_view firstPage() const;
  void overwrite(std::string_view place, std::string_view value);

  std::span<std::byte> bytes_;
  std::string_view table_{};
  std::string_view trailer_{};
  std::string_view pages_{};
  int pageCount_ = 0;
};

}  // namespace orvane
