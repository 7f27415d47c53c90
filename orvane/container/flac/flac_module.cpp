#include "orvane/container/flac/flac_module.h"

#include "orvane/container/flac/flac_audio_file.h"
#include "orvane/platform/export.h"

namespace orvane {
namespace {

constexpr FLACModule kModule{.open = openFLACFile};

}  // namespace
}  // namespace orvane

extern "C" ORVANE_API const orvane::FLACModule* orvaneFLACModule(int version) {
  return version == orvane::kFLACModuleVersion ? &orvane::kModule : nullptr;
}
