#include "orvane/speech/detector/speech_model.h"

#include <array>
#include <span>

#include "orvane/platform/file_text.h"
#include "orvane/platform/orvane_resources.h"
#include "orvane/platform/sha256.h"
#include "orvane/speech/detector/onnx_weights.h"

namespace orvane {
namespace {

struct Name {
  const char* resource;
  const char* extension;
  const char* version;
};

/// What a host ships comes before what was installed beside the library.
constexpr std::array kNames = {Name{"silero-vad-unified-256ms-v6.0.0", "mlmodelc", "6.0.0"},
                               Name{"silero_vad_v6", "onnx", "6"}};

}  // namespace

std::optional<SpeechModel> SpeechModel::installed() {
  for (const Name& name : kNames)
    if (auto path = OrvaneResources::url(name.resource, name.extension))
      return SpeechModel{*std::move(path), name.version};
  return std::nullopt;
}

std::string SpeechModel::hash() const {
  const std::string content = readFileText(path, kMaximumModelBytes);
  return sha256(std::as_bytes(std::span(content)));
}

}  // namespace orvane
