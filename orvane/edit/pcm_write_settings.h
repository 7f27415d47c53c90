#pragma once

#include "orvane/container/audio_container.h"
#include "orvane/container/pcm_encoding.h"
#include "orvane/platform/audio_format.h"
#include "orvane/platform/export.h"

/// The settings with which a PCM file is opened for writing.
namespace orvane::PCMWriteSettings {

/// The rate, channels and layout of `format`, stored in the container as the encoding says, in the
/// byte order that the container has.
ORVANE_API AudioFormatSettings make(AudioContainer container, const AudioFormat& format,
                                    const PCMEncoding& encoding);

}  // namespace orvane::PCMWriteSettings
