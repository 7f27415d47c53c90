#pragma once

#include <string_view>

#include "orvane/report/report_parts.h"

/// The argument of `--selection`.
namespace orvane::cli::SelectionOption {

/// From "A-B" or "A-", each time in seconds or as [h:]mm:ss[.fff]. Throws `UsageError`.
ReportParts::Selection parse(std::string_view text);

}  // namespace orvane::cli::SelectionOption
