#include "orvane/speech/dialogue/dialogue_json.h"

#include "orvane/speech/dialogue/dialogue_coding.h"

namespace orvane::DialogueJSON {
namespace {

constexpr json::Style kLineStyle{.mustBeFinite = true};
constexpr json::Style kFileStyle{.isPretty = true, .sortsKeys = true, .mustBeFinite = true};

}  // namespace

std::string text(const DialogueRegion& region) {
  return json::encode(region, kLineStyle);
}

DialogueRegion region(std::string_view json) {
  return json::decode<DialogueRegion>(json, kLineStyle);
}

std::string text(const DialogueSidecar& sidecar) {
  return json::encode(sidecar, kFileStyle);
}

DialogueSidecar sidecar(std::string_view json) {
  return json::decode<DialogueSidecar>(json, kFileStyle);
}

}  // namespace orvane::DialogueJSON
