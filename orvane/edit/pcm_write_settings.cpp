#include "orvane/edit/pcm_write_settings.h"

namespace orvane {

AudioFormatSettings PCMWriteSettings::make(AudioContainer container, const AudioFormat& format,
                                           const PCMEncoding& encoding) {
  return {.fileTypeID = fileTypeID(container),
          .formatID = kFormatLinearPCM,
          .sampleRate = format.sampleRate,
          .channelCount = format.channelCount,
          .layout = format.layout,
          .linearPCMBitDepth = encoding.bitDepth,
          .linearPCMIsFloat = encoding.isFloat,
          .linearPCMIsBigEndian = isBigEndian(container)};
}

}  // namespace orvane
