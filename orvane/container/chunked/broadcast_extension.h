#pragma once

#include <bit>
#include <cstddef>
#include <optional>
#include <vector>

#include "orvane/container/broadcast_loudness.h"
#include "orvane/container/chunked/chunk_edits.h"

/// The chunk `bext` of WAVE files (EBU Tech 3285).
namespace orvane::BroadcastExtension {

/// The time reference follows the head. The loudness of version 2, which was that of other samples,
/// is unset; or it is the given one, whatever version the chunk had.
void follow(ChunkEdits& edits, const std::optional<BroadcastLoudness>& loudness);

/// A chunk of version 2 that states the loudness and nothing else.
std::vector<std::byte> stating(const BroadcastLoudness& loudness, std::endian order);

}  // namespace orvane::BroadcastExtension
