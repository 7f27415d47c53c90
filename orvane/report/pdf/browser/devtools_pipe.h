#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/file_descriptor.h"
#include "orvane/report/pdf/browser/browser_error.h"
#include "orvane/report/pdf/browser/devtools_message.h"
#include "orvane/report/pdf/browser/patience.h"

namespace orvane {

/// Talks to a browser over its two pipes: JSON texts, each ended by a NUL byte. One thread of its
/// own reads and writes as either becomes possible, so that neither side ever waits for the other
/// to read first; any number of threads may make calls.
class ORVANE_TESTING_API DevToolsPipe {
 public:
  /// Open descriptors, none of which blocks; they stay the caller's and outlive this.
  struct Ends {
    int commands = -1;
    int replies = -1;
    int messages = -1;  ///< where the browser complains, in plain text
    int ending = -1;    ///< readable when the browser has ended; -1 for none
  };

  /// The longest message that is taken. The longest that is asked for is a piece of a PDF.
  static constexpr std::size_t kMaximumMessage = std::size_t{16} << 20;

  explicit DevToolsPipe(const Ends& ends);
  ~DevToolsPipe();
  DevToolsPipe(const DevToolsPipe&) = delete;
  DevToolsPipe& operator=(const DevToolsPipe&) = delete;

  /// Sends a command and waits for its reply, which it gives whole. Throws `BrowserError` and, when
  /// the observer asks for it, `Cancelled`.
  std::string call(const DevToolsMessage::Command& command, const Patience& patience);
  /// Sends a command whose reply nobody needs.
  void post(const DevToolsMessage::Command& command);

  /// False after the first failure of the connection; every call then throws that failure.
  bool isOpen() const;
  /// Whether a page has crashed; calls to it then fail at once.
  bool hasCrashed(const std::string& session) const;
  /// Makes the connection fail, e.g. when the browser answers no more.
  void giveUp(BrowserError::Case kind, const std::string& why);

 private:
  struct Waiting {
    std::string session{};
    std::optional<std::string> reply{};
    std::optional<BrowserError> failure{};
  };

  void run();
  bool readReplies();
  bool writeCommands();
  void readMessages();
  bool takeReplies(std::size_t searchedBefore);
  void dispatch(std::string message);
  void failSession(const std::string& session);
  void failBecauseEnded();
  void wake() const;
  /// Gives the command a number and puts it into the queue; the lock is held.
  std::int64_t enqueue(const DevToolsMessage::Command& command);

  Ends ends_;
  FileDescriptor wakeUp_{};

  // Of the thread alone.
  std::string incoming_{};
  std::string messagesTail_{};
  bool hasMessages_ = true;
  std::string outgoing_{};
  std::size_t written_ = 0;

  mutable std::mutex mutex_{};
  std::condition_variable answered_{};
  std::deque<std::string> queue_{};
  std::map<std::int64_t, Waiting> waiting_{};
  std::set<std::string, std::less<>> crashed_{};
  std::optional<BrowserError> failure_{};
  std::int64_t lastId_ = 0;
  bool stops_ = false;

  std::thread thread_{};
};

/// Of what a browser wrote to standard error, the line that says why it ended; empty when nothing
/// does. Routine lines of its log are passed over.
ORVANE_TESTING_API std::string lastWords(std::string_view messages);

}  // namespace orvane
