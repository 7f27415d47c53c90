#pragma once

// Marks what the shared libraries export; everything else has hidden visibility.
#define ORVANE_API __attribute__((visibility("default")))
