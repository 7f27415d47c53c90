#pragma once

#include <string>

namespace orvane {

/// How a report writes its date. Empty fields mean those of the process: its locale settings and
/// its local time.
struct ReportLocale {
  std::string locale{};    ///< "en_GB", "de" …
  std::string timeZone{};  ///< "Europe/Berlin", "UTC" …

  bool operator==(const ReportLocale&) const = default;
};

}  // namespace orvane
