#pragma once

#include "cli/json_output.h"
#include "cli/measured_file.h"

namespace orvane::cli {

/// Every figure of a measured file, under the names of the record's fields, with what was found
/// beside them. The curves have a point per 100 ms and come on request only.
JsonOutput::Json analysisJson(const MeasuredFile& file, bool withCurves);

}  // namespace orvane::cli
