#include "orvane/rawpcm/raw_pcm_coding.h"

namespace orvane {

ORVANE_JSON_FORM(RawPCMFormat);

}  // namespace orvane
