// Reads arbitrary bytes as a chapter list of each kind.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "orvane/analysis/chapter_measurement.h"
#include "orvane/audio/chapter_list.h"
#include "orvane/text/utf8.h"

namespace {

using orvane::ChapterList::Format;

void require(bool holds) {
  if (!holds) std::abort();
}

void checkMarks(std::vector<orvane::ChapterMark> marks, std::size_t textSize) {
  require(!marks.empty() && marks.size() <= orvane::ChapterList::kMaximumChapters);
  require(marks.size() <= textSize);
  for (const auto& mark : marks) {
    require(std::isfinite(mark.startSeconds) && mark.startSeconds >= 0);
    require(!mark.endSeconds || *mark.endSeconds >= mark.startSeconds);
    require(orvane::isValidUTF8(mark.name));
  }
  constexpr double kDuration = 3600;
  double last = 0;
  for (const auto& span : orvane::ChapterMeasurement::spansOf(std::move(marks), kDuration)) {
    require(last <= span.startSec && span.startSec < span.endSec && span.endSec <= kDuration);
    last = span.startSec;
  }
}

void check(std::string_view text, Format format) {
  try {
    checkMarks(orvane::ChapterList::read(text, format), text.size());
  } catch (const orvane::ChapterListError& error) {
    require(!error.errorDescription().empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  (void)orvane::ChapterList::formatOf(text);
  for (const Format format : {Format::json, Format::csv, Format::audacityLabels, Format::cueSheet})
    check(text, format);
  return 0;
}
