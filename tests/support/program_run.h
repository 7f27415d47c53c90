#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace orvane::test {

/// How a run of a program is set up.
struct ProgramSetup {
  std::vector<std::string> arguments{};
  std::string input{};                     ///< bytes on standard input, through a pipe
  std::filesystem::path inputFile{};       ///< standard input is this file instead
  std::filesystem::path outputFile{};      ///< standard output is this file instead
  std::filesystem::path folder{};          ///< working folder; empty for this process's
  std::vector<std::string> environment{};  ///< "NAME=value", beside PATH
  bool closesOutput = false;               ///< standard output is closed
  bool hasNoReader = false;                ///< nobody reads standard output
  std::uint64_t largestFile = 0;           ///< bytes that a file may get; 0 for no limit
  bool isOnTerminal = false;               ///< standard output and error are a terminal
  /// Runs once the program is started, with its process id.
  std::function<void(int)> meanwhile{};
};

/// What came of it.
struct ProgramEnd {
  int exitCode = -1;  ///< −1 when a signal ended the program
  int signal = 0;
  std::string output{};  ///< of standard output; on a terminal of both streams
  std::string errors{};  ///< of standard error
};

/// Runs a program to its end. Ends it, and fails by an exception, after a minute.
ProgramEnd runProgram(const std::filesystem::path& program, const ProgramSetup& setup);

}  // namespace orvane::test
