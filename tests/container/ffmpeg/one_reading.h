#pragma once

#include <cstddef>
#include <filesystem>

#include "tests/container/ffmpeg/compressed_files.h"

namespace orvane::test {

/// Reads a file to its end by that many threads, in blocks of `frames`, and drops the audio.
void readThrough(std::size_t threads, const std::filesystem::path& file, std::uint32_t frames);

/// Expects that all that a host can see of reading a file, samples, warnings and errors, is the
/// same for 2, 3 and 16 threads as for one.
void expectOneReading(const std::filesystem::path& file);

}  // namespace orvane::test
