#include "tests/support/test_places.h"

namespace orvane::test::places {

const char* const program = ORVANE_PROGRAM;
const char* const example = ORVANE_EXAMPLE;
const char* const faults = ORVANE_FAULTS;
const char* const fakeBrowser = ORVANE_SOURCE_FOLDER "/tests/support/fake_browser.py";
const char* const models = ORVANE_SOURCE_FOLDER "/build/models";
const char* const goldenReports = ORVANE_SOURCE_FOLDER "/tests/report/golden";
const char* const goldenCaptures = ORVANE_SOURCE_FOLDER "/tests/cli/golden";
const char* const formatsDocument = ORVANE_SOURCE_FOLDER "/docs/formats.md";
const char* const conformanceDocument = ORVANE_SOURCE_FOLDER "/docs/conformance.md";

}  // namespace orvane::test::places
