// Only the digits change: the XML is somebody else's, and what its other elements mean is not
// known.

#include "orvane/container/chunked/ixml_time_stamp.h"

#include <optional>
#include <string>
#include <utility>

#include "orvane/text/number_text.h"

namespace orvane {
namespace {

/// Halves of numbers of 64 bits: the time stamp, and the copy of what `bext` says.
constexpr std::pair<std::string_view, std::string_view> kHalves[] = {
    {"<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI>", "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>"},
    {"<BWF_TIME_REFERENCE_HIGH>", "<BWF_TIME_REFERENCE_LOW>"}};

struct Digits {
  std::size_t first = 0;
  std::size_t count = 0;
  std::uint32_t value = 0;
};

std::optional<Digits> digitsBehind(const std::string& xml, std::string_view tag) {
  const std::size_t place = xml.find(tag);
  if (place == std::string::npos) return std::nullopt;
  const std::size_t first = place + tag.size();
  const std::size_t end = xml.find('<', first);
  if (end == std::string::npos) return std::nullopt;
  const auto value =
      NumberText::parsed<std::uint32_t>(std::string_view(xml).substr(first, end - first));
  if (!value) return std::nullopt;
  return Digits{first, end - first, *value};
}

void setDigits(std::string& xml, std::string_view tag, std::uint64_t value) {
  if (const auto digits = digitsBehind(xml, tag))
    xml.replace(digits->first, digits->count, std::to_string(value));
}

}  // namespace

void followIXMLTimeStamp(ChunkEdits& edits) {
  edits.edit(fourCCFrom("iXML"), [&](const HeaderFields& body, HeaderBytes& edited) {
    std::string xml = body.rest(0);
    for (const auto& [high, low] : kHalves) {
      const auto highDigits = digitsBehind(xml, high);
      const auto lowDigits = digitsBehind(xml, low);
      if (!highDigits || !lowDigits) continue;
      const std::uint64_t moved =
          edits.frames().movedReference(std::uint64_t{highDigits->value} << 32U | lowDigits->value);
      setDigits(xml, high, moved >> 32U);
      setDigits(xml, low, moved & 0xFFFFFFFF);
    }
    edited.text(xml);
    return true;
  });
}

}  // namespace orvane
