#pragma once

#include <cstdint>
#include <string>

#include "orvane/text/number_text.h"

/// Numbers as people read them; the same in every locale.
namespace orvane::cli::NumberText {

using orvane::NumberText::padded;
using orvane::NumberText::shortest;

/// With that many decimals; "-inf", "inf" or "nan" when the number is not finite. Never "-0.0".
std::string fixed(double value, int decimals);

/// The same with "+" before positive numbers.
std::string signedFixed(double value, int decimals);

/// "0:03.500", "1:02:03.004"; rounded down to milliseconds.
std::string duration(double seconds);

/// "48 kHz", "44.1 kHz", "100 Hz"; with three decimals at most.
std::string sampleRate(double hertz);

/// "812 B", "3.4 KiB", "1.2 GiB".
std::string byteCount(std::int64_t bytes);

/// "1 run", "3 runs", "1,234 runs".
std::string counted(std::int64_t count, const std::string& noun);

}  // namespace orvane::cli::NumberText
