#include "tests/support/tool_runner.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "tests/support/temporary_directory.h"

namespace orvane::test {
namespace {

std::string contents(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace

std::filesystem::path toolPath(const std::string& program) {
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    const auto candidate = std::filesystem::path(folder) / program;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return {};
}

std::string runTool(const std::string& program, const std::vector<std::string>& arguments) {
  const auto tool = toolPath(program);
  if (tool.empty()) throw std::runtime_error(program + " is not installed");
  // Output goes through files, so that no pipe can fill up.
  const TemporaryDirectory folder;
  const auto output = folder / "out";
  const auto errors = folder / "err";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), O_WRONLY | O_CREAT, 0600);
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  pid_t child = 0;
  const int failure =
      posix_spawn(&child, tool.c_str(), &actions, nullptr, pointers.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failure != 0) throw std::runtime_error("cannot start " + program);
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    throw std::runtime_error(program + " failed: " + contents(errors));
  return contents(output);
}

}  // namespace orvane::test
