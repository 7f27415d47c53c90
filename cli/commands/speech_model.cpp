#include "cli/commands/speech_model.h"

#include "orvane/platform/error.h"
#include "orvane/platform/module_location.h"
#include "orvane/platform/orvane_resources.h"
#include "orvane/speech/detector/speech_model.h"

namespace orvane::cli {

std::optional<SpeechModelName> nameOfSpeechModel() {
  const auto model = SpeechModel::installed();
  if (!model) return std::nullopt;
  try {
    return SpeechModelName{model->version, model->hash()};
  } catch (const Error&) {
    return std::nullopt;
  }
}

void requireSpeechModel() {
  if (SpeechModel::installed()) return;
  const auto folder = OrvaneResources::bundleOfBinary(ModuleLocation::module()).bundleURL;
  throw PlatformError("silero_vad_v6.onnx",
                      "the speech model is not installed; \"scripts/install-model '" +
                          (folder.value_or(".") / "OrvaneHeadless_OrvaneHeadless.bundle").string() +
                          "'\" of the source folder installs it");
}

}  // namespace orvane::cli
