#pragma once

#include <cstddef>
#include <span>

namespace orvane {

/// Whether the bytes are text: printable characters of ASCII, UTF-8 or any 8-bit code, or UTF-16
/// with its mark.
bool isText(std::span<const std::byte> head);

/// Whether text is a list of, or a pointer to, other files: M3U, PLS, ASX, XSPF, SMIL, CUE,
/// ffconcat, SDP or DASH.
bool isPlaylistText(std::span<const std::byte> head);

}  // namespace orvane
