#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

namespace orvane::cli {

/// An option whose value is a number within bounds.
struct NumberOption {
  std::string name{};      ///< "--chapter-tolerance"
  std::string argument{};  ///< what the help calls its value
  std::string group{};
  double lowest = 0;
  double highest = 0;
  std::string description{};
};

/// Hands the value to `set`. What is no number or lies outside the bounds is a `UsageError`.
void addNumberOption(CLI::App& command, const NumberOption& option,
                     const std::function<void(double)>& set);

}  // namespace orvane::cli
