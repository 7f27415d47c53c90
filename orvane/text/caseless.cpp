#include "orvane/text/caseless.h"

#include <unicode/unistr.h>
#include <unicode/unorm.h>

namespace orvane {
namespace {

icu::UnicodeString utf16(std::string_view text) {
  return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

}  // namespace

bool areCaselessEqual(std::string_view a, std::string_view b) {
  const auto wideA = utf16(a), wideB = utf16(b);
  UErrorCode status = U_ZERO_ERROR;
  const auto order = unorm_compare(wideA.getBuffer(), wideA.length(), wideB.getBuffer(),
                                   wideB.length(), U_COMPARE_IGNORE_CASE, &status);
  return U_SUCCESS(status) ? order == 0 : a == b;
}

}  // namespace orvane
