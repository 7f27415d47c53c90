#include "orvane/container/mp3/mp3_audio_file.h"
#include "orvane/platform/export.h"

namespace orvane {
namespace {

constexpr DecoderModule kModule{.open = openMP3File, .describe = describeMP3File};

}  // namespace
}  // namespace orvane

extern "C" ORVANE_API const orvane::DecoderModule* orvaneMP3Module(int version) {
  return version == orvane::kDecoderModuleVersion ? &orvane::kModule : nullptr;
}
