#pragma once

#include <memory>

#include "orvane/container/audio_file.h"
#include "orvane/container/flac/flac_module.h"

namespace orvane {

/// See `FLACModule::open`.
std::unique_ptr<AudioFile> openFLACFile(std::shared_ptr<const InputFile> file,
                                        const AudioFileOpenOptions& options,
                                        FLACModule::OpenByFFmpeg openByFFmpeg);

}  // namespace orvane
