#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/rawpcm/raw_pcm_format.h"

namespace orvane::cli {

/// What is to be known of a source to read its audio.
struct SourceOptions {
  std::optional<RawPCMFormat> rawFormat{};  ///< present: the files are headerless PCM
  std::optional<int> streamIndex{};         ///< absent for a file's default audio stream
};

/// `--raw` with the options that state parts of its format, and `--preset`. `format` has their
/// sense once the command is parsed, and must outlive it.
void addRawOptions(CLI::App& command, std::optional<RawPCMFormat>& format);

/// `--raw-a` and `--preset-a` for one of a command's files, here "A".
void addRawOptionsFor(CLI::App& command, const std::string& file,
                      std::optional<RawPCMFormat>& format);

/// `addRawOptions` and `--stream`.
void addSourceOptions(CLI::App& command, SourceOptions& options);

/// The format of headerless PCM as it is declared: `text` is ENCODING[,RATE[,CHANNELS]] and then
/// planar, skip=BYTES and tolerate=BYTES in any order, for example "s24le,48000,2,skip=512". What
/// it leaves out stands in `parts`, by the names "rate", "channels", "layout", "skip" and
/// "tolerate". Throws `UsageError` for what is missing, stated twice or wrong.
RawPCMFormat rawFormatOf(std::string_view text, std::map<std::string, std::string> parts = {});

/// What `--raw` takes for that format.
std::string rawOptionText(const RawPCMFormat& format);

}  // namespace orvane::cli
