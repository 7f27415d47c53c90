// Reads arbitrary bytes as a sidecar, as a region and as a list of regions; what is accepted must
// come back equal from what is written of it.
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "orvane/speech/dialogue/dialogue_json.h"
#include "orvane/speech/dialogue/dialogue_timeline_formats.h"

namespace {

using orvane::DialogueRegion;
namespace formats = orvane::DialogueTimelineFormats;

using orvane::fuzz::require;

void checkSidecar(std::string_view text) {
  try {
    const auto sidecar = orvane::DialogueJSON::sidecar(text);
    require(orvane::DialogueJSON::sidecar(orvane::DialogueJSON::text(sidecar)) == sidecar);
    const auto history = DialogueRegion::toHistory(sidecar.regions, 1000);
    require(history.size() == 1000);
  } catch (const orvane::DecodingError& error) {
    require(!error.errorDescription().empty());
  }
}

void checkRegion(std::string_view text) {
  try {
    const auto region = orvane::DialogueJSON::region(text);
    require(std::isfinite(region.start) && std::isfinite(region.end));
    require(orvane::DialogueJSON::region(orvane::DialogueJSON::text(region)) == region);
  } catch (const orvane::DecodingError& error) {
    require(!error.errorDescription().empty());
  }
}

void checkList(std::string_view text, formats::Format format) {
  try {
    const auto regions = formats::regions(text, format);
    require(regions.size() <= text.size());
    const auto back = formats::regions(formats::text(regions, format), format);
    require(back.size() == regions.size());
    for (std::size_t i = 0; i < back.size(); ++i) {
      require(back[i].start == regions[i].start && back[i].end == regions[i].end);
      // Label tracks cannot hold control characters.
      if (format == formats::Format::csv) require(back[i].label == regions[i].label);
    }
  } catch (const orvane::DialogueTimelineError& error) {
    require(error.line() > 0 && !error.errorDescription().empty());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  checkSidecar(text);
  checkRegion(text);
  checkList(text, formats::Format::csv);
  checkList(text, formats::Format::audacityLabels);
  return 0;
}
