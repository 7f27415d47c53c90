#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

#include "orvane/container/chapter_mark.h"
#include "orvane/platform/export.h"

namespace orvane {

/// More marks of one file are not read.
inline constexpr std::size_t kMaximumEmbeddedChapters = 10'000;

/// The chapters that a file itself holds, in the order of their starts; empty when it has none.
/// These are the cue points of WAVE, RF64 and BW64 with their labels and regions, the markers of
/// AIFF and CAF, and the chapters of what FFmpeg reads: MP4, Matroska, MP3 with ID3 tags, Ogg,
/// FLAC. Names that are not UTF-8 are taken for ISO 8859-1. Throws `PlatformError` for what cannot
/// be read or is no audio file; markers that are damaged are passed over.
ORVANE_API std::vector<ChapterMark> readEmbeddedChapters(const std::filesystem::path& path);

}  // namespace orvane
