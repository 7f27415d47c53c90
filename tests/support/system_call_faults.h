#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// Lets the calls fail by which files are read and written. A test binary that is linked with this
/// has its own openat, pwrite, fsync, …, which stand before the C library's for the libraries too;
/// into a program they come by LD_PRELOAD (`variablesFor`).
namespace orvane::test::SystemCallFaults {

enum class Kind {
  none,
  failOnce,      ///< call number `at` fails with `code`
  failFromThen,  ///< that one and all later ones
  shorten,       ///< call number `at`, if it writes, takes one byte only
  interrupt,     ///< call number `at`, if it writes, fails with EINTR
  kill,          ///< the process dies by SIGKILL just before call number `at`
  terminate,     ///< it gets SIGTERM there
  stop,          ///< it stops there, until it is told to go on
};

struct Plan {
  Kind kind = Kind::none;
  std::size_t at = 0;     ///< counted from 0
  int code = 0;           ///< an errno value
  bool anonymous = true;  ///< false: the system knows no files without a name
  bool exchange = true;   ///< false: nor does it exchange two names
  std::string only{};     ///< counts only calls of this name; empty for all
  /// Runs before each call, as a program beside this one would.
  std::function<void(std::string_view call)> meanwhile{};
};

/// Takes effect at once and counts from 0.
void begin(const Plan& plan);

/// Back to normal. The names of the calls since `begin`, in order.
std::vector<std::string> end();

/// The environment by which a program has the plan from its start. It notes each call in `log`, a
/// line each. `library` is the shared library made of these files.
std::vector<std::string> variablesFor(const Plan& plan, const std::filesystem::path& library,
                                      const std::filesystem::path& log);

}  // namespace orvane::test::SystemCallFaults
