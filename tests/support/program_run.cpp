#include "tests/support/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "tests/support/sanitized.h"

namespace orvane::test {
namespace {

/// After which a program counts as hanging.
std::chrono::minutes patience() {
  return std::chrono::minutes(isSanitized() ? 10 : 1);
}

struct Pipe {
  int readEnd = -1;
  int writeEnd = -1;

  Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    readEnd = ends[0];
    writeEnd = ends[1];
  }
  ~Pipe() {
    closeEnd(readEnd);
    closeEnd(writeEnd);
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  static void closeEnd(int& end) {
    if (end != -1) ::close(end);
    end = -1;
  }
};

// A terminal of 100 columns whose output arrives unchanged.
class Terminal {
 public:
  explicit Terminal(bool isWanted) {
    if (!isWanted) return;
    termios modes{};
    cfmakeraw(&modes);
    winsize size{};
    size.ws_row = 24;
    size.ws_col = 100;
    if (::openpty(&master, &slave, nullptr, &modes, &size) != 0)
      throw std::runtime_error("no terminal");
    ::fcntl(master, F_SETFD, FD_CLOEXEC);
    ::fcntl(slave, F_SETFD, FD_CLOEXEC);
  }
  ~Terminal() {
    Pipe::closeEnd(master);
    Pipe::closeEnd(slave);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  int master = -1;
  int slave = -1;
};

struct Streams {
  Pipe input;
  Pipe output;
  Pipe errors;
  Terminal terminal;

  explicit Streams(const ProgramSetup& setup) : terminal(setup.isOnTerminal) {}
};

// In the child: everything from here to the program itself.
[[noreturn]] void become(const std::filesystem::path& program, const ProgramSetup& setup,
                         const Streams& streams) {
  std::vector<std::string> texts = {program.string()};
  texts.insert(texts.end(), setup.arguments.begin(), setup.arguments.end());
  std::vector<char*> arguments;
  for (auto& text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);

  std::vector<std::string> variables = setup.environment;
  variables.emplace_back("PATH=/usr/bin:/bin");
  std::vector<char*> environment;
  for (auto& variable : variables) environment.push_back(variable.data());
  environment.push_back(nullptr);

  const int input = setup.inputFile.empty() ? streams.input.readEnd
                                            : ::open(setup.inputFile.c_str(), O_RDONLY | O_CLOEXEC);
  int output = setup.isOnTerminal ? streams.terminal.slave : streams.output.writeEnd;
  if (!setup.outputFile.empty()) output = ::open(setup.outputFile.c_str(), O_WRONLY | O_CLOEXEC);
  ::dup2(input, STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(setup.isOnTerminal ? streams.terminal.slave : streams.errors.writeEnd, STDERR_FILENO);
  if (setup.closesOutput) ::close(STDOUT_FILENO);
  ::signal(SIGPIPE, SIG_DFL);  // this process ignores it
  if (setup.largestFile > 0) {
    const rlimit limit{setup.largestFile, setup.largestFile};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  if (!setup.folder.empty() && ::chdir(setup.folder.c_str()) != 0) ::_exit(97);
  ::execve(program.c_str(), arguments.data(), environment.data());
  ::_exit(96);
}

// Reads what is there; false once the other side is closed.
bool take(int descriptor, std::string& text) {
  std::array<char, 1 << 16> buffer;
  const ssize_t count = ::read(descriptor, buffer.data(), buffer.size());
  if (count > 0) text.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
}

// Collects output until both streams are closed; ends a program that takes too long.
void collect(Streams& streams, const ProgramSetup& setup, pid_t child, ProgramEnd& end) {
  const int output = setup.isOnTerminal ? streams.terminal.master : streams.output.readEnd;
  std::array<pollfd, 2> sources = {pollfd{output, POLLIN, 0},
                                   pollfd{streams.errors.readEnd, POLLIN, 0}};
  const auto deadline = std::chrono::steady_clock::now() + patience();
  while (sources[0].fd != -1 || sources[1].fd != -1) {
    ::poll(sources.data(), sources.size(), 1000);
    if (sources[0].revents != 0 && !take(sources[0].fd, end.output)) sources[0].fd = -1;
    if (sources[1].revents != 0 && !take(sources[1].fd, end.errors)) sources[1].fd = -1;
    if (std::chrono::steady_clock::now() > deadline) {
      ::kill(child, SIGKILL);
      ::waitpid(child, nullptr, 0);
      throw std::runtime_error("the program did not end");
    }
  }
}

}  // namespace

ProgramEnd runProgram(const std::filesystem::path& program, const ProgramSetup& setup) {
  Streams streams(setup);
  if (setup.hasNoReader) Pipe::closeEnd(streams.output.readEnd);
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) become(program, setup, streams);

  Pipe::closeEnd(streams.input.readEnd);
  Pipe::closeEnd(streams.output.writeEnd);
  Pipe::closeEnd(streams.errors.writeEnd);
  Pipe::closeEnd(streams.terminal.slave);
  ::signal(SIGPIPE, SIG_IGN);  // the program may end before it has read everything
  ProgramEnd end;
  {
    // Beside the reading, so that neither side waits for the other.
    const std::jthread writer([&] {
      if (setup.meanwhile) setup.meanwhile(child);
      std::string_view rest = setup.input;
      while (!rest.empty()) {
        const ssize_t written = ::write(streams.input.writeEnd, rest.data(), rest.size());
        if (written <= 0) break;
        rest.remove_prefix(static_cast<std::size_t>(written));
      }
      Pipe::closeEnd(streams.input.writeEnd);
    });
    collect(streams, setup, child, end);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (WIFEXITED(status)) end.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
  return end;
}

}  // namespace orvane::test
