#pragma once

#include <memory>
#include <optional>

#include "orvane/container/audio_file.h"
#include "orvane/container/decoder_module.h"

namespace orvane {

/// See `DecoderModule::open`. Of a native FLAC stream.
std::unique_ptr<AudioFile> openFLACFile(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options,
                                        DecoderModule::OpenByFFmpeg openByFFmpeg);

/// See `DecoderModule::describe`.
std::optional<AudioFileDescription> describeFLACFile(std::shared_ptr<const InputFile> file,
                                                     const AudioFileOpenOptions& options);

}  // namespace orvane
