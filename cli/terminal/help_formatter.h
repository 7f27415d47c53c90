#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace orvane::cli {

/// `--help` as it should read: usage first, then what the command does, then its options by group.
/// The name of an option's argument is its `option_text`. Lines have at most 80 columns.
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override;
};

}  // namespace orvane::cli
