#pragma once

#include <string>

#include "cli/commands/measured_file.h"
#include "cli/terminal/console.h"

namespace orvane::cli {

/// What is reported of a file beside its own figures, for people.
namespace ReportTable {

/// The parts that were asked for, an empty line before each; empty when there are none.
std::string parts(const MeasuredFile& file, const Console& console);

/// One sentence for each requested target that is missed.
std::vector<std::string> missedTargets(const MeasuredFile& file);

}  // namespace ReportTable
}  // namespace orvane::cli
