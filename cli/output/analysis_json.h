#pragma once

#include <string>

#include "cli/commands/measured_file.h"

namespace orvane::cli {

/// Every figure of a measured file, under the names of the record's fields, with what was found
/// beside them; one line. The curves have a point per 100 ms and come on request only.
std::string analysisJson(const MeasuredFile& file, bool withCurves);

}  // namespace orvane::cli
