#include "orvane/report/pdf/browser/devtools_pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace orvane {
namespace {

using Case = BrowserError::Case;

constexpr std::size_t kPiece = 65536;
constexpr std::size_t kMessagesKept = 8192;
/// How often a waiting caller asks its observer.
constexpr std::chrono::milliseconds kGlance{20};
/// How long what an ending browser says may be under way.
constexpr int kLastWordsMilliseconds = 100;

/// While one lives, threads started here handle none of the process's signals. In particular a
/// browser that reads no more must not stop us by SIGPIPE.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_{};
};

BrowserError crash() {
  return {Case::ended, "The browser's page crashed."};
}

bool isWorthARetry(int code) {
  return code == EAGAIN || code == EWOULDBLOCK || code == EINTR;
}

}  // namespace

DevToolsPipe::DevToolsPipe(const Ends& ends)
    : ends_(ends), wakeUp_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!wakeUp_) throw PlatformError("browser", std::error_code(errno, std::generic_category()));
  const SignalsBlocked blocked;
  thread_ = std::thread([this] { run(); });
}

DevToolsPipe::~DevToolsPipe() {
  {
    const std::lock_guard lock(mutex_);
    stops_ = true;
  }
  wake();
  thread_.join();
}

std::int64_t DevToolsPipe::enqueue(const DevToolsMessage::Command& command) {
  auto text = DevToolsMessage::text(++lastId_, command);
  text += '\0';
  queue_.push_back(std::move(text));
  return lastId_;
}

std::string DevToolsPipe::call(const DevToolsMessage::Command& command, const Patience& patience) {
  std::unique_lock lock(mutex_);
  if (failure_) throw BrowserError(*failure_);
  // It would not answer, and its end has been told already.
  if (crashed_.contains(command.session)) throw crash();
  const std::int64_t id = enqueue(command);
  Waiting& waiting = waiting_[id];
  waiting.session = command.session;
  wake();
  try {
    while (!waiting.reply && !waiting.failure) {
      answered_.wait_for(lock, kGlance);
      if (waiting.reply || waiting.failure) break;
      lock.unlock();  // the observer may take its time
      patience.check();
      lock.lock();
    }
  } catch (...) {
    lock.lock();
    waiting_.erase(id);
    throw;
  }
  const auto taken = waiting_.extract(id);
  lock.unlock();
  if (taken.mapped().failure) throw BrowserError(*taken.mapped().failure);
  const auto heading = DevToolsMessage::heading(*taken.mapped().reply);
  if (heading && heading->error)
    throw BrowserError(Case::refused, "The browser refused " + std::string(command.method) + ": " +
                                          *heading->error);
  return std::move(*taken.mapped().reply);
}

void DevToolsPipe::post(const DevToolsMessage::Command& command) {
  const std::lock_guard lock(mutex_);
  if (failure_) return;
  enqueue(command);
  wake();
}

bool DevToolsPipe::isOpen() const {
  const std::lock_guard lock(mutex_);
  return !failure_;
}

bool DevToolsPipe::hasCrashed(const std::string& session) const {
  const std::lock_guard lock(mutex_);
  return crashed_.contains(session);
}

void DevToolsPipe::giveUp(Case kind, const std::string& why) {
  const std::lock_guard lock(mutex_);
  if (!failure_) failure_ = BrowserError(kind, why);
  for (auto& [id, waiting] : waiting_)
    if (!waiting.reply && !waiting.failure) waiting.failure = failure_;
  queue_.clear();
  answered_.notify_all();
  wake();
}

void DevToolsPipe::wake() const {
  const std::uint64_t one = 1;
  // A full counter wakes as well.
  (void)!::write(wakeUp_.number(), &one, sizeof one);
}

void DevToolsPipe::run() {
  try {
    for (;;) {
      if (outgoing_.empty()) {
        const std::lock_guard lock(mutex_);
        if (!queue_.empty()) {
          outgoing_ = std::move(queue_.front());
          queue_.pop_front();
          written_ = 0;
        }
      }
      {
        const std::lock_guard lock(mutex_);
        if (stops_ || failure_) return;
      }
      const short writing = outgoing_.empty() ? 0 : POLLOUT;
      std::array<pollfd, 5> events{{{ends_.replies, POLLIN, 0},
                                    {outgoing_.empty() ? -1 : ends_.commands, writing, 0},
                                    {hasMessages_ ? ends_.messages : -1, POLLIN, 0},
                                    {wakeUp_.number(), POLLIN, 0},
                                    {ends_.ending, POLLIN, 0}}};
      if (poll(events.data(), events.size(), -1) < 0 && errno != EINTR)
        return giveUp(Case::ended, "The connection to the browser failed.");
      if (events[3].revents != 0) {
        std::uint64_t count = 0;
        (void)!::read(wakeUp_.number(), &count, sizeof count);
      }
      if (events[2].revents != 0) readMessages();
      if (events[0].revents != 0 && !readReplies()) return failBecauseEnded();
      if (events[1].revents != 0 && !writeCommands()) return failBecauseEnded();
      // Only when nothing is left to read: its helpers may hold the pipe open.
      if (events[4].revents != 0 && events[0].revents == 0) return failBecauseEnded();
    }
  } catch (const std::exception& failure) {
    giveUp(Case::ended, std::string("The connection to the browser failed: ") + failure.what());
  }
}

/// False at the end of the browser's replies.
bool DevToolsPipe::readReplies() {
  const std::size_t before = incoming_.size();
  incoming_.resize(before + kPiece);
  const ssize_t count = ::read(ends_.replies, incoming_.data() + before, kPiece);
  const int code = errno;
  incoming_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count < 0) return isWorthARetry(code);
  return count > 0 && takeReplies(before);
}

/// Hands out every whole message; the bytes before `searchedBefore` hold no end of one.
bool DevToolsPipe::takeReplies(std::size_t searchedBefore) {
  std::size_t start = 0;
  std::size_t search = searchedBefore;
  for (;;) {
    const auto end = incoming_.find('\0', search);
    if (end == std::string::npos) break;
    dispatch(incoming_.substr(start, end - start));
    start = search = end + 1;
  }
  incoming_.erase(0, start);
  if (incoming_.size() > kMaximumMessage)
    giveUp(Case::invalidReply, "The browser sent a message that is too long.");
  return true;
}

void DevToolsPipe::dispatch(std::string message) {
  const auto heading = DevToolsMessage::heading(message);
  if (!heading || (!heading->id && heading->method.empty()))
    return giveUp(Case::invalidReply, "The browser sent something that is no reply.");
  if (!heading->id) {
    if (heading->method == "Inspector.targetCrashed") failSession(heading->session);
    return;
  }
  const std::lock_guard lock(mutex_);
  const auto found = waiting_.find(*heading->id);
  if (found == waiting_.end()) return;  // nobody waits for it, or no more
  found->second.reply = std::move(message);
  answered_.notify_all();
}

void DevToolsPipe::failSession(const std::string& session) {
  const std::lock_guard lock(mutex_);
  crashed_.insert(session);
  for (auto& [id, waiting] : waiting_)
    if (waiting.session == session && !waiting.reply) waiting.failure = crash();
  answered_.notify_all();
}

/// False when the browser reads no more.
bool DevToolsPipe::writeCommands() {
  const std::size_t size = std::min(outgoing_.size() - written_, kPiece);
  const ssize_t count = ::write(ends_.commands, outgoing_.data() + written_, size);
  if (count < 0) return isWorthARetry(errno);
  written_ += static_cast<std::size_t>(count);
  if (written_ == outgoing_.size()) outgoing_.clear();
  return true;
}

void DevToolsPipe::readMessages() {
  std::array<char, 4096> piece{};
  const ssize_t count = ::read(ends_.messages, piece.data(), piece.size());
  if (count < 0 && isWorthARetry(errno)) return;
  hasMessages_ = count > 0;
  if (!hasMessages_) return;
  messagesTail_.append(piece.data(), static_cast<std::size_t>(count));
  if (messagesTail_.size() > kMessagesKept)
    messagesTail_.erase(0, messagesTail_.size() - kMessagesKept);
}

void DevToolsPipe::failBecauseEnded() {
  pollfd event{ends_.messages, POLLIN, 0};
  while (hasMessages_ && poll(&event, 1, kLastWordsMilliseconds) > 0) readMessages();
  const std::string words = lastWords(messagesTail_);
  giveUp(Case::ended, words.empty() ? "The browser ended unexpectedly."
                                    : "The browser ended unexpectedly: " + words);
}

}  // namespace orvane
