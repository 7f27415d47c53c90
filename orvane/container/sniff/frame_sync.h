#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "orvane/platform/four_cc.h"

namespace orvane {

/// Recognises streams without a container, which are strings of frames that each begin with a sync
/// word and state their own length: DTS, AC-3, E-AC-3, ADTS, LOAS, MPEG audio, SBC. A sync word
/// alone is too weak, so several frames must follow one another, or frames must fill the file.
/// `head` is the file's beginning, `isWhole` tells that it is all of it. Gives the file type code.
std::optional<FourCC> sniffFrames(std::span<const std::byte> head, bool isWhole);

}  // namespace orvane
