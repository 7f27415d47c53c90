#pragma once

// Marks what the shared libraries export; everything else has hidden visibility.
#define ORVANE_API __attribute__((visibility("default")))

// Exported so that the project's own tests and benchmarks can reach it. Its header is not installed
// and nothing outside the project may rely on it.
#define ORVANE_TESTING_API __attribute__((visibility("default")))
