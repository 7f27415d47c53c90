#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Runs the independent programs that tests compare with.
namespace orvane::test {

/// Where the program is, by PATH; empty when it is not installed.
std::filesystem::path toolPath(const std::string& program);

/// Runs a program to its end, without a shell and without input. Throws with its error output when
/// it fails; gives its standard output.
std::string runTool(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace orvane::test
