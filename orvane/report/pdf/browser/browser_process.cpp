#include "orvane/report/pdf/browser/browser_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "orvane/platform/error.h"

namespace orvane {
namespace {

using std::filesystem::path;

/// A browser in good health needs 0.1 s.
constexpr std::chrono::milliseconds kPatienceAtEnd{300};
constexpr std::chrono::milliseconds kPause{5};

constexpr const char* kArguments[] = {
    "--headless",
    "--remote-debugging-pipe",
    "--no-first-run",
    "--no-default-browser-check",
    "--disable-gpu",
    // Containers give very little shared memory.
    "--disable-dev-shm-usage",
    "--disable-extensions",
    "--disable-background-networking",
    "--disable-component-update",
    "--disable-default-apps",
    "--disable-sync",
    "--disable-breakpad",
    "--metrics-recording-only",
    // No page gets anything from outside, by name or by number, directly or through a proxy.
    "--host-resolver-rules=MAP * ~NOTFOUND",
    "--no-proxy-server",
    "--hide-scrollbars",
    "--mute-audio",
    "--password-store=basic",
    "--force-color-profile=srgb",
};

struct Pipe {
  FileDescriptor readEnd{};
  FileDescriptor writeEnd{};
};

[[noreturn]] void fail(const path& program, int code) {
  throw PlatformError(program, std::error_code(code, std::generic_category()));
}

Pipe makePipe(const path& program) {
  int ends[2] = {};
  if (pipe2(ends, O_CLOEXEC) != 0) fail(program, errno);
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

/// Away from the numbers that the child is given, so that none of them is copied onto itself: it
/// would then still be closed when the program starts.
FileDescriptor movedAway(FileDescriptor file, const path& program) {
  constexpr int kFirstFree = 10;
  FileDescriptor moved(fcntl(file.number(), F_DUPFD_CLOEXEC, kFirstFree));
  if (!moved) fail(program, errno);
  return moved;
}

void stopBlocking(const FileDescriptor& file, const path& program) {
  const int flags = fcntl(file.number(), F_GETFL);
  if (flags < 0 || fcntl(file.number(), F_SETFL, flags | O_NONBLOCK) != 0) fail(program, errno);
}

/// What the child is to find: its descriptors, its process group, signals as at login.
class SpawnSettings {
 public:
  SpawnSettings() {
    posix_spawn_file_actions_init(&actions_);
    posix_spawnattr_init(&attributes_);
  }
  ~SpawnSettings() {
    posix_spawnattr_destroy(&attributes_);
    posix_spawn_file_actions_destroy(&actions_);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  /// The error number of the first step that failed, else 0.
  int describe(int commands, int replies, int messages) {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    constexpr short kFlags = POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    for (const int code : {
             posix_spawn_file_actions_addopen(&actions_, 0, "/dev/null", O_RDONLY, 0),
             posix_spawn_file_actions_addopen(&actions_, 1, "/dev/null", O_WRONLY, 0),
             posix_spawn_file_actions_adddup2(&actions_, messages, 2),
             posix_spawn_file_actions_adddup2(&actions_, commands, 3),
             posix_spawn_file_actions_adddup2(&actions_, replies, 4),
             posix_spawn_file_actions_addclosefrom_np(&actions_, 5),
             posix_spawnattr_setpgroup(&attributes_, 0),
             posix_spawnattr_setsigmask(&attributes_, &none),
             posix_spawnattr_setsigdefault(&attributes_, &all),
             posix_spawnattr_setflags(&attributes_, kFlags),
         })
      if (code != 0) return code;
    return 0;
  }

  const posix_spawn_file_actions_t* actions() const noexcept { return &actions_; }
  const posix_spawnattr_t* attributes() const noexcept { return &attributes_; }

 private:
  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
};

std::vector<std::string> argumentsOf(const path& program, const path& folder) {
  std::vector<std::string> arguments = {program.string()};
  arguments.insert(arguments.end(), std::begin(kArguments), std::end(kArguments));
  arguments.push_back("--user-data-dir=" + folder.string());
  // The browser's own protection does not work for the superuser; for everybody else it stays, and
  // if the system lacks what it needs the browser says so.
  if (geteuid() == 0) arguments.emplace_back("--no-sandbox");
  return arguments;
}

/// That of this process, but with temporary files in the folder that is removed in the end.
std::vector<std::string> environmentWith(const path& folder) {
  std::vector<std::string> variables;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
    if (!std::string_view(*variable).starts_with("TMPDIR=")) variables.emplace_back(*variable);
  variables.push_back("TMPDIR=" + folder.string());
  return variables;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

BrowserProcess::BrowserProcess(const path& program) {
  auto commands = makePipe(program);
  auto replies = makePipe(program);
  auto messages = makePipe(program);
  commands_ = std::move(commands.writeEnd);
  replies_ = std::move(replies.readEnd);
  messages_ = std::move(messages.readEnd);
  for (const auto* file : {&commands_, &replies_, &messages_}) stopBlocking(*file, program);
  const auto childCommands = movedAway(std::move(commands.readEnd), program);
  const auto childReplies = movedAway(std::move(replies.writeEnd), program);
  const auto childMessages = movedAway(std::move(messages.writeEnd), program);

  auto arguments = argumentsOf(program, folder_.path());
  auto environment = environmentWith(folder_.path());
  const auto argumentPointers = pointersTo(arguments);
  const auto environmentPointers = pointersTo(environment);
  SpawnSettings settings;
  int code =
      settings.describe(childCommands.number(), childReplies.number(), childMessages.number());
  if (code == 0)
    code = posix_spawn(&process_, program.c_str(), settings.actions(), settings.attributes(),
                       argumentPointers.data(), environmentPointers.data());
  if (code != 0) fail(program, code);
  // This C library's header for it cannot be used from C++.
  ending_ = FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process_, 0)));
}

BrowserProcess::~BrowserProcess() {
  commands_.close();
  replies_.close();
  messages_.close();
  waitForEnd(kPatienceAtEnd);
  // Before the process is collected: until then its number, and so that of its group, is not given
  // to anybody else.
  kill(-process_, SIGKILL);
  while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void BrowserProcess::waitForEnd(std::chrono::milliseconds patience) const noexcept {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (std::chrono::steady_clock::now() < end) {
    siginfo_t state{};
    const int result =
        waitid(P_PID, static_cast<id_t>(process_), &state, WEXITED | WNOHANG | WNOWAIT);
    if (result != 0 ? errno != EINTR : state.si_pid == process_) return;
    std::this_thread::sleep_for(kPause);
  }
}

}  // namespace orvane
