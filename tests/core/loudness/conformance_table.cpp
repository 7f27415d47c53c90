#include "tests/core/loudness/conformance_table.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "tests/core/loudness/conformance_cases.h"

namespace orvane::core::conformance {
namespace {

constexpr std::array<std::uint32_t, 4> kSampleRates{44100, 48000, 96000, 192000};

constexpr const char* kIntroduction =
    R"(# Conformance

The test cases of EBU Tech 3341 v4 (loudness meters) and EBU Tech 3342 v4 (loudness range), made from
their definitions and measured by `LoudnessProcessor`. Each cell is the reading that lies farthest from
what the case demands, as its distance in LU or dB: momentary (M) and short-term (S) demands hold at
every step, "highest" ones for each of twenty stretches. All tones are 1 kHz, in phase on both channels,
levels in dBFS; the tones of cases 15 to 23 are bound to the sample rate fs.

Recordings cannot be made from a definition: cases 7 and 8 of Tech 3341 and 5 and 6 of Tech 3342 are
left out. Part of the distance in cases 1 to 14 is the standard's own: K-weighting raises 1 kHz by
0.007 dB more than the 997 Hz for which its offset stands.

This page is printed by a test program; `./test` fails when it no longer tells what is measured:

```sh
cmake --build build/release --target conformance_table
build/release/bin/conformance_table > docs/conformance.md
```

| Case | Signal | Demand | Allowed | 44.1 kHz | 48 kHz | 96 kHz | 192 kHz |
|---|---|---|---|---|---|---|---|
)";

std::string formatted(const char* format, double value) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), format, value);
  std::string result = text.data();
  if (result.front() == '-') result.replace(0, 1, "−");
  return result;
}

}  // namespace

std::string table() {
  std::string text = kIntroduction;
  for (const Case& entry : cases()) {
    text += "| " + entry.document + "-" + std::to_string(entry.number) + " | " + entry.signal +
            " | " + entry.required + " | ";
    text += entry.allowedAbove == entry.allowedBelow
                ? formatted("±%.1f", entry.allowedAbove)
                : formatted("%+.1f", entry.allowedAbove) + " / " +
                      formatted("%+.1f", -entry.allowedBelow);
    for (const std::uint32_t rate : kSampleRates) {
      const bool isAsked = std::find(entry.sampleRates.begin(), entry.sampleRates.end(), rate) !=
                           entry.sampleRates.end();
      text +=
          " | " + (isAsked ? formatted("%+.3f", farthest(entry.measure(rate)).deviation()) : "–");
    }
    text += " |\n";
  }
  return text;
}

}  // namespace orvane::core::conformance
