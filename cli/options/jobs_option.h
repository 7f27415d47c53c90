#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orvane::cli {

/// `--jobs N`: how many files are treated at once, 1 … 1024. `jobs` must outlive the command.
void addJobsOption(CLI::App& command, int& jobs, const std::string& description,
                   const std::string& group);

}  // namespace orvane::cli
