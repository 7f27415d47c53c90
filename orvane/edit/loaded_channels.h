#pragma once

#include "orvane/audio/audio_source.h"
#include "orvane/edit/edit_result.h"
#include "orvane/platform/export.h"

namespace orvane::EditOperations {

/// All of a source that nothing has been read of, as arrays; a damaged one may end before its
/// length. Throws what reading throws.
ORVANE_API ChannelArrays loadChannels(AudioSource& source);

}  // namespace orvane::EditOperations
