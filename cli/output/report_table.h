#pragma once

#include <string>

#include "cli/commands/measured_file.h"
#include "cli/terminal/console.h"

namespace orvane::cli {

/// What is reported of a file beside its own figures, for people.
namespace ReportTable {

/// The parts that were asked for, an empty line before each; empty when there are none.
std::string parts(const MeasuredFile& file, const Console& console);

}  // namespace ReportTable
}  // namespace orvane::cli
