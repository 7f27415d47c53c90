#pragma once

#include <string>
#include <string_view>

#include "orvane/rawpcm/raw_pcm_format.h"

/// The argument of `--raw`: ENCODING,RATE,CHANNELS[,planar][,skip=BYTES][,tolerate=BYTES], for
/// example "s24le,48000,2,skip=512".
namespace orvane::cli::RawFormatOption {

/// The declared format. Throws `UsageError` naming the part that is wrong.
RawPCMFormat parse(std::string_view text);

/// For `--help`: the shape and the encodings.
std::string description();

}  // namespace orvane::cli::RawFormatOption
