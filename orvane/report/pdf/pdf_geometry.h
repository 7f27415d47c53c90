#pragma once

/// The page of a PDF report, in points, which are the CSS pixels of its HTML.
namespace orvane::PDFGeometry {

/// A4 at 96 pixels per inch.
inline constexpr int kWidth = 794;
inline constexpr int kMinimumHeight = 1123;
/// 200 inches: what every reader of PDF must handle (ISO 32000-1, Annex C).
inline constexpr int kUsualMaximumHeight = 14400;

}  // namespace orvane::PDFGeometry
