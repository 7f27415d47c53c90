#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// Lets `new` fail: in a test binary that is linked with this, for the libraries too; into a
/// program it comes by LD_PRELOAD (`variablesFor`).
namespace orvane::test::AllocationFaults {

/// The allocation number `at`, counted from 0 and from now on, throws.
void begin(std::size_t at);

/// Back to normal. Whether that allocation was asked for.
bool end();

/// Begins what the environment asks for, once.
void beginAsAsked();

/// The environment by which the program's allocation number `at` fails, counted from the first file
/// on that it opens; then `note` is made. `library` is the shared library made of these files.
std::vector<std::string> variablesFor(std::size_t at, const std::filesystem::path& library,
                                      const std::filesystem::path& note);

}  // namespace orvane::test::AllocationFaults
