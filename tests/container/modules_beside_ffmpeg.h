#pragma once

#include <filesystem>
#include <string>

/// What the modules that decode a kind of file without FFmpeg have in common.
namespace orvane::test {

/// Expects that describing and reading the file loads that library and nothing of FFmpeg's. The
/// running test is called again in a fresh process where FFmpeg is here already.
void expectReadWithoutFFmpeg(const std::filesystem::path& file, const std::string& library);

/// Expects the title "A song" and one chapter, "Second half" at 0.5 s.
void expectSongInTwoHalves(const std::filesystem::path& file);

}  // namespace orvane::test
