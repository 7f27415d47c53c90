#pragma once

#include <string>

#include "orvane/audio/audio_file_identity.h"

namespace orvane::cli {

/// What people call an encoding: that of the identity, and for the codecs that it knows by their
/// code alone the name under which they are known.
std::string codecText(const AudioFileIdentity& identity);

}  // namespace orvane::cli
