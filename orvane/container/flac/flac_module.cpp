#include "orvane/container/flac/flac_audio_file.h"
#include "orvane/platform/export.h"

namespace orvane {
namespace {

constexpr DecoderModule kModule{.open = openFLACFile, .describe = describeFLACFile};

}  // namespace
}  // namespace orvane

extern "C" ORVANE_API const orvane::DecoderModule* orvaneFLACModule(int version) {
  return version == orvane::kDecoderModuleVersion ? &orvane::kModule : nullptr;
}
