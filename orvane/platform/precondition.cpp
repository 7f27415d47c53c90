#include "orvane/platform/precondition.h"

#include <cstdio>
#include <cstdlib>

namespace orvane {

void precondition(bool holds, std::string_view rule, std::source_location where) {
  if (holds) [[likely]]
    return;
  std::fprintf(stderr, "orvane: programming error: %.*s (%s:%u)\n", static_cast<int>(rule.size()),
               rule.data(), where.file_name(), static_cast<unsigned>(where.line()));
  std::abort();
}

}  // namespace orvane
