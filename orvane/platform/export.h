#pragma once

// Marks what the shared libraries export; everything else has hidden visibility.
#define ORVANE_API __attribute__((visibility("default")))

// Marks what only the project's own tests, benchmarks and fuzzers reach. Its header is not
// installed, and a library that is built without them does not export it.
#ifdef ORVANE_EXPORTS_FOR_TESTING
#define ORVANE_TESTING_API ORVANE_API
#else
#define ORVANE_TESTING_API
#endif
