#pragma once

#include <string_view>

/// What of the page stands in files of its own; built into the library.
namespace orvane::HTMLReportBuilder {

/// The page with placeholders: "{{style}}", "{{header}}" …
std::string_view pageFrame() noexcept;
std::string_view styleSheet() noexcept;
std::string_view iconPNG() noexcept;
/// The product's web address.
std::string_view productURL() noexcept;

}  // namespace orvane::HTMLReportBuilder
