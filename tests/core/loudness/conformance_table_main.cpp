// conformance_table: prints docs/conformance.md. With --pins: the readings in full precision, as
// the rows of tests/core/loudness/conformance_pins.h.
#include <cstdio>
#include <cstring>

#include "tests/core/loudness/conformance_cases.h"
#include "tests/core/loudness/conformance_table.h"

int main(int argc, char** argv) {
  namespace conformance = orvane::core::conformance;
  if (argc == 2 && std::strcmp(argv[1], "--pins") == 0) {
    for (const auto& entry : conformance::cases())
      for (const auto rate : entry.sampleRates)
        std::printf("    {%s, %d, %u, %.9g},\n", entry.document.c_str(), entry.number, rate,
                    conformance::farthest(entry.measure(rate)).actual);
    return 0;
  }
  std::fputs(conformance::table().c_str(), stdout);
  return 0;
}
