#include "orvane/platform/precondition.h"

#include <cstdio>
#include <cstdlib>

namespace orvane {

void precondition(bool holds, std::string_view rule, const char* file, unsigned line) {
  if (holds) [[likely]]
    return;
  std::fprintf(stderr, "orvane: programming error: %.*s (%s:%u)\n", static_cast<int>(rule.size()),
               rule.data(), file, line);
  std::abort();
}

}  // namespace orvane
