#include "cli/commands/file_work.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/platform/error.h"

namespace orvane::cli {
namespace {

using ::testing::ElementsAre;

struct Outcome {
  ExitCode code{};
  std::string output{};
  std::string errors{};
};

Outcome outcomeOf(const std::function<FileWork::Report(const InputName&)>& work) {
  Console console(ConsoleTraits{});
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const std::vector<InputName> files = {{"a/b.wav", "a/b.wav"}, {"/proc/self/fd/3", "-"}};
  const auto code = FileWork::run(files, {.json = true}, console, work);
  return {code, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

/// The messages of failure lines, in their order.
std::vector<std::string> failuresIn(const std::string& output) {
  std::vector<std::string> messages;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);)
    messages.push_back(nlohmann::json::parse(line).at("error"));
  return messages;
}

// Only the library's own failures and a want of memory once had their line.
TEST(FileWork, EveryKindOfFailureHasItsLine) {
  const auto fails = [](auto error) {
    return [error](const InputName&) -> FileWork::Report { throw error; };
  };
  const auto ofSystem = outcomeOf(fails(PlatformError("b.wav", "Permission denied")));
  EXPECT_EQ(ofSystem.code, ExitCode::fileFailed);
  EXPECT_EQ(ofSystem.errors,
            "orvane: a/b.wav: Permission denied\norvane: b.wav: Permission denied\n");
  EXPECT_THAT(failuresIn(ofSystem.output),
              ElementsAre("a/b.wav: Permission denied", "b.wav: Permission denied"));

  const auto ofMemory = outcomeOf(fails(std::bad_alloc()));
  EXPECT_EQ(ofMemory.code, ExitCode::fileFailed);
  EXPECT_EQ(ofMemory.errors,
            "orvane: a/b.wav: not enough memory\norvane: standard input: not enough memory\n");
  EXPECT_THAT(failuresIn(ofMemory.output),
              ElementsAre("a/b.wav: not enough memory", "standard input: not enough memory"));

  const auto ofLibrary = outcomeOf(fails(std::length_error("too long")));
  EXPECT_EQ(ofLibrary.code, ExitCode::fileFailed);
  EXPECT_THAT(failuresIn(ofLibrary.output),
              ElementsAre("a/b.wav: too long", "standard input: too long"));
}

TEST(FileWork, StopsForACancelledFileAlone) {
  EXPECT_THROW(
      {
        Console console(ConsoleTraits{});
        FileWork::run({{"a.wav", "a.wav"}}, {}, console,
                      [](const InputName&) -> FileWork::Report { throw Cancelled(); });
      },
      Cancelled);
}

}  // namespace
}  // namespace orvane::cli
