#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"
#include "orvane/platform/orvane_resources.h"

namespace orvane::OrvaneResources {

/// The content of the resource that `url` finds; absent when there is none, or when it cannot be
/// read or is not UTF-8.
ORVANE_API std::optional<std::string> text(std::string_view resource, std::string_view extension);

/// The same, asked of a given module and a given program.
ORVANE_API std::optional<std::string> text(const Bundle& module, const Bundle& program,
                                           std::string_view resource, std::string_view extension);

}  // namespace orvane::OrvaneResources
