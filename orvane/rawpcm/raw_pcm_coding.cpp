#include "orvane/rawpcm/raw_pcm_coding.h"

namespace orvane {

ORVANE_JSON_FORM(RawPCMFormat);
ORVANE_JSON_FORM(RawPCMPreset);

}  // namespace orvane
