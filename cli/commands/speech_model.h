#pragma once

namespace orvane::cli {

/// Throws `PlatformError`, whose text tells how to install it, when there is no speech model.
void requireSpeechModel();

}  // namespace orvane::cli
