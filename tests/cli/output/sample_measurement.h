#pragma once

#include <cstddef>
#include <limits>

#include "cli/commands/measured_file.h"

namespace orvane::cli::test {

/// A made-up measurement with a different value in every field.
inline MeasuredFile sampleMeasurement(std::size_t channels = 2) {
  MeasuredFile file;
  file.name = {"folder/song.wav", "folder/song.wav"};
  file.identity = AudioFileIdentity{.containerTypeID = fourCCFrom("WAVE"),
                                    .containerName = "WAV",
                                    .pathExtension = "wav",
                                    .formatID = fourCCFrom("lpcm"),
                                    .pcmEncoding = PCMEncoding{24, false}};
  auto& result = file.result;
  result.url = file.name.path;
  result.sampleRate = 48000;
  result.channelCount = static_cast<std::int64_t>(channels);
  result.durationSeconds = 61.5;
  result.fileFormat = "WAV";
  result.fileSize = 17'712'044;
  result.bitDepth = 24;
  result.integratedLUFS = -14.04F;
  result.loudnessRange = 6.3F;
  result.truePeakDB = -0.95F;
  result.samplePeakDB = -1.1F;
  result.maxMomentaryLUFS = -9.2F;
  result.maxShortTermLUFS = -11.7F;
  result.dynamicRange = 9;
  result.speechGatedLUFS = -std::numeric_limits<float>::infinity();
  for (std::size_t i = 0; i < channels; ++i) {
    const auto step = static_cast<float>(i);
    result.channelPeakDB.push_back(-1.1F - step);
    result.channelRMSDB.push_back(-18.25F - step);
    result.channelCrestFactorDB.push_back(17.15F);
    result.channelDCOffset.push_back(i % 2 == 0 ? 0.00012F : -0.00034F);
    result.channelHasClipping.push_back(false);
  }
  result.loudnessCurve = {{0.1, -std::numeric_limits<float>::infinity(), -70.5F, -70.1F},
                          {0.2, -20.25F, -21.5F, -22.1F}};
  if (channels > 1) result.stereoWidthCurve = {{0.1, 0.5F}, {0.2, -0.25F}};
  return file;
}

}  // namespace orvane::cli::test
