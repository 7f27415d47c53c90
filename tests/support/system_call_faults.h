#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Lets the calls fail by which files are written. A test binary that is linked with this has its
/// own openat, pwrite, fsync, …, which stand before the C library's for the libraries too.
namespace orvane::test::SystemCallFaults {

enum class Kind {
  none,
  failOnce,      ///< call number `at` fails with `code`
  failFromThen,  ///< that one and all later ones
  shorten,       ///< call number `at`, if it writes, takes one byte only
  interrupt,     ///< call number `at`, if it writes, fails with EINTR
  kill,          ///< the process dies by SIGKILL just before call number `at`
};

struct Plan {
  Kind kind = Kind::none;
  std::size_t at = 0;     ///< counted from 0
  int code = 0;           ///< an errno value
  bool anonymous = true;  ///< false: the system knows no files without a name
  std::string only{};     ///< counts only calls of this name; empty for all
};

/// Takes effect at once and counts from 0.
void begin(const Plan& plan);

/// Back to normal. The names of the calls since `begin`, in order.
std::vector<std::string> end();

}  // namespace orvane::test::SystemCallFaults
