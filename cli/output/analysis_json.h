#pragma once

#include "cli/commands/measured_file.h"
#include "cli/output/json_output.h"

namespace orvane::cli {

/// Every figure of a measured file, under the names of the record's fields, with what was found
/// beside them. The curves have a point per 100 ms and come on request only.
JsonOutput::Json analysisJson(const MeasuredFile& file, bool withCurves);

}  // namespace orvane::cli
