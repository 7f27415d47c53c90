#pragma once

#include <memory>
#include <optional>

#include "orvane/container/audio_file.h"
#include "orvane/container/decoder_module.h"

namespace orvane {

/// See `DecoderModule::open`.
std::unique_ptr<AudioFile> openMP3File(std::shared_ptr<const InputFile> file,
                                       const AudioFileOpenOptions& options,
                                       DecoderModule::OpenByFFmpeg openByFFmpeg);

/// See `DecoderModule::describe`.
std::optional<AudioFileDescription> describeMP3File(std::shared_ptr<const InputFile> file,
                                                    const AudioFileOpenOptions& options);

}  // namespace orvane
