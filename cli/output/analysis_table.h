#pragma once

#include <string>

#include "cli/commands/measured_file.h"
#include "cli/terminal/console.h"

/// Measured files as people read them.
namespace orvane::cli::AnalysisTable {

/// Everything about one file: what it is, its figures, its channels, clipping and warnings.
std::string block(const MeasuredFile& file, const Console& console);

}  // namespace orvane::cli::AnalysisTable
