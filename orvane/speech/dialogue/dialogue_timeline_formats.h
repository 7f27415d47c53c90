#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/speech/dialogue/dialogue_region.h"
#include "orvane/text/text_list_error.h"

namespace orvane {

/// A list of regions that cannot be read: "Line 3: …".
using DialogueTimelineError = TextListError;

/// Lists of regions in the forms of other programs, as UTF-8. Both carry start, end and label; the
/// regions read from them are new ones without a detector's span. Times are seconds, 0 or more, and
/// no region ends before it starts.
namespace DialogueTimelineFormats {

enum class Format {
  csv,             ///< "csv": comma-separated values (RFC 4180)
  audacityLabels,  ///< "audacity": a label track of the audio editor Audacity
};

/// Absent for any other name.
ORVANE_API std::optional<Format> formatFromName(std::string_view name) noexcept;

/// What a text seems to be: label tracks begin with a number and a tab.
ORVANE_API Format formatOf(std::string_view text);

ORVANE_API std::string text(const std::vector<DialogueRegion>& regions, Format format);

/// The text may also be UTF-16 with a byte-order mark. Throws `DialogueTimelineError`.
ORVANE_API std::vector<DialogueRegion> regions(std::string_view text, Format format);

/// A header, then one record per region: start, end, label, and whether the region is "detected",
/// "changed" or "drawn". Lines end with CR LF. Labels that a spreadsheet would take for a formula
/// get an apostrophe in front.
ORVANE_API std::string csv(const std::vector<DialogueRegion>& regions);

/// Columns are found by the names "start", "end" and "label" of the header, others are passed over;
/// without a header they are start, end and, if present, label. Lines may end either way; empty
/// ones are passed over. Labels come back as they were, from `csv` above to the byte. Throws
/// `DialogueTimelineError`.
ORVANE_API std::vector<DialogueRegion> regionsFromCSV(std::string_view text);

/// One line per region: start, end and label with tabs between. Control characters of labels, which
/// the format cannot hold, become spaces.
ORVANE_API std::string audacityLabels(const std::vector<DialogueRegion>& regions);

/// The lines of frequency ranges, which begin with a backslash, are passed over. Throws
/// `DialogueTimelineError`.
ORVANE_API std::vector<DialogueRegion> regionsFromAudacityLabels(std::string_view text);

}  // namespace DialogueTimelineFormats
}  // namespace orvane
