#pragma once

#include <cstddef>
#include <string>

#include "cli/commands/measured_file.h"

namespace orvane::cli {

/// Every figure of a measured file, under the names of the record's fields, with what was found
/// beside them; one line. The curves have a point per 100 ms and come on request only.
std::string analysisJson(const MeasuredFile& file, bool withCurves);

/// The figures of several files measured as one programme, under the names that a file's have; one
/// line.
std::string albumJson(const MeasuredFile& album, std::size_t fileCount);

}  // namespace orvane::cli
