#pragma once

#include <string>

namespace orvane::core::conformance {

/// docs/conformance.md, from measurements made now.
std::string table();

}  // namespace orvane::core::conformance
