#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "orvane/platform/export.h"

namespace orvane {

/// The SHA-256 hash of bytes (FIPS 180-4), as 64 hexadecimal digits in lower case.
ORVANE_TESTING_API std::string sha256(std::span<const std::byte> bytes);

}  // namespace orvane
