#pragma once

#include <string>
#include <utility>
#include <vector>

#include "orvane/report/orvane_report.h"

namespace orvane::test {

/// Reports of made-up files, the same at every call. Their figures come from plain arithmetic, so
/// that renderings can be compared byte for byte everywhere.

/// Every section: a headerless stereo file with a selection, violations, chapters and music.
OrvaneReport fullReport();
/// Two channels of digital silence.
OrvaneReport silentFileReport();
/// One channel, podcast mode, a speech share.
OrvaneReport monoFileReport();
/// A song with its music analysis.
OrvaneReport musicFileReport();
/// Headerless audio as declared.
OrvaneReport headerlessFileReport();
/// An audiobook of thirty chapters.
OrvaneReport audiobookReport();
/// A stereo programme of that many hours, with all curves and nothing else.
OrvaneReport longProgrammeReport(int hours);
/// A file whose every text is this one.
OrvaneReport reportSaying(const std::string& text);
/// A file whose every text tries to break out of the report.
OrvaneReport hostileReport();

/// The first six with their names.
std::vector<std::pair<std::string, OrvaneReport>> sampleReports();

}  // namespace orvane::test
