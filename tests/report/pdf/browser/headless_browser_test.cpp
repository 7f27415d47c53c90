#include "orvane/report/pdf/browser/headless_browser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <fstream>
#include <optional>
#include <thread>
#include <vector>

#include "orvane/report/pdf/browser/browser_search.h"
#include "tests/support/fake_browser.h"
#include "tests/support/in_child.h"

namespace orvane {
namespace {

using Case = BrowserError::Case;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using testing::HasSubstr;

Patience forSeconds(int seconds) {
  return {.deadline = Clock::now() + std::chrono::seconds(seconds)};
}

/// The error of a call; fails the test when there is none.
BrowserError failureOf(DevToolsPipe& pipe, std::string_view method,
                       const Patience& patience = forSeconds(60)) {
  try {
    pipe.call({.method = method, .session = "S"}, patience);
  } catch (const BrowserError& failure) {
    return failure;
  }
  ADD_FAILURE() << method << " did not fail";
  return {Case::notFound, ""};
}

class HeadlessBrowserTest : public testing::Test {
 protected:
  ~HeadlessBrowserTest() override { EXPECT_TRUE(temporary_.isEmpty()); }
  test::OwnTemporaryFolder temporary_{};
};

TEST_F(HeadlessBrowserTest, AnswersCallsOfManyThreads) {
  const test::FakeBrowser fake("");
  HeadlessBrowser browser(fake.program());
  std::vector<std::thread> threads;
  std::atomic<int> answers = 0;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([&] {
      for (int k = 0; k < 20; ++k)
        answers += browser.pipe().call({.method = "Page.getFrameTree"}, forSeconds(60)).size() > 9;
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(answers, 160);
  EXPECT_TRUE(browser.pipe().isOpen());
}

TEST_F(HeadlessBrowserTest, PutsSplitAndJoinedRepliesTogether) {
  for (const char* script : {"split", "joined"}) {
    const test::FakeBrowser fake(script);
    HeadlessBrowser browser(fake.program());
    for (int i = 0; i < 5; ++i) {
      const auto reply = browser.pipe().call({.method = "Target.createTarget"}, forSeconds(60));
      EXPECT_EQ(DevToolsMessage::stringAt(reply, {"result", "targetId"}), "T") << script;
    }
  }
}

// Both pipes hold 64 KiB: who writes without reading waits for ever.
TEST_F(HeadlessBrowserTest, SendsAndReceivesMoreThanAPipeHoldsAtOnce) {
  const test::FakeBrowser fake("talkative");
  HeadlessBrowser browser(fake.program());
  const std::string parameters = R"({"html":")" + std::string(3'000'000, 'h') + R"("})";
  for (int i = 0; i < 3; ++i) browser.pipe().post({.method = "Posted", .parameters = parameters});
  EXPECT_NO_THROW(
      browser.pipe().call({.method = "Called", .parameters = parameters}, forSeconds(60)));
  EXPECT_GT(fake.commands().size(), 12'000'000U);
}

TEST_F(HeadlessBrowserTest, PassesOnARefusal) {
  const test::FakeBrowser fake("error Page.x");
  HeadlessBrowser browser(fake.program());
  EXPECT_EQ(failureOf(browser.pipe(), "Page.x"),
            BrowserError(Case::refused, "The browser refused Page.x: No such thing"));
  EXPECT_NO_THROW(browser.pipe().call({.method = "Page.y"}, forSeconds(60)));
}

TEST_F(HeadlessBrowserTest, TellsWhatABrowserSaidThatExitsAtOnce) {
  const test::FakeBrowser fake("exit No usable sandbox!");
  HeadlessBrowser browser(fake.program());
  EXPECT_EQ(failureOf(browser.pipe(), "A"),
            BrowserError(Case::ended, "The browser ended unexpectedly: No usable sandbox!"));
  // It stays so.
  EXPECT_EQ(failureOf(browser.pipe(), "B").kind(), Case::ended);
  EXPECT_FALSE(browser.pipe().isOpen());
}

TEST_F(HeadlessBrowserTest, TellsWhatABrowserSaidThatDies) {
  const test::FakeBrowser fake("die B");
  HeadlessBrowser browser(fake.program());
  EXPECT_NO_THROW(browser.pipe().call({.method = "A"}, forSeconds(60)));
  EXPECT_EQ(failureOf(browser.pipe(), "B"),
            BrowserError(Case::ended, "The browser ended unexpectedly: It broke [31m"));
}

TEST_F(HeadlessBrowserTest, FailsWhenTheBrowserReadsNoMore) {
  const test::FakeBrowser fake("deaf");
  HeadlessBrowser browser(fake.program());
  const std::string much = R"({"html":")" + std::string(1'000'000, 'h') + R"("})";
  EXPECT_THROW(browser.pipe().call({.method = "A", .parameters = much}, forSeconds(60)),
               BrowserError);
  EXPECT_FALSE(browser.pipe().isOpen());
}

TEST_F(HeadlessBrowserTest, TellsOfACrashedPage) {
  const test::FakeBrowser fake("crash Page.x");
  HeadlessBrowser browser(fake.program());
  EXPECT_EQ(failureOf(browser.pipe(), "Page.x"),
            BrowserError(Case::ended, "The browser's page crashed."));
  EXPECT_TRUE(browser.pipe().isOpen());
  EXPECT_TRUE(browser.pipe().hasCrashed("S"));
  // A crashed page answers nothing; other pages do.
  EXPECT_EQ(failureOf(browser.pipe(), "Page.y"),
            BrowserError(Case::ended, "The browser's page crashed."));
  EXPECT_NO_THROW(browser.pipe().call({.method = "Page.y", .session = "T"}, forSeconds(60)));
}

TEST_F(HeadlessBrowserTest, RefusesWhatIsNoReply) {
  const test::FakeBrowser fake("nonsense A");
  HeadlessBrowser browser(fake.program());
  EXPECT_EQ(failureOf(browser.pipe(), "A"),
            BrowserError(Case::invalidReply, "The browser sent something that is no reply."));
}

TEST_F(HeadlessBrowserTest, RefusesAMessageWithoutEnd) {
  const test::FakeBrowser fake("endless A");
  HeadlessBrowser browser(fake.program());
  EXPECT_EQ(failureOf(browser.pipe(), "A"),
            BrowserError(Case::invalidReply, "The browser sent a message that is too long."));
}

TEST_F(HeadlessBrowserTest, WaitsNoLongerThanTheDeadline) {
  const test::FakeBrowser fake("hang");
  const auto start = Clock::now();
  std::optional<HeadlessBrowser> browser(std::in_place, fake.program());
  EXPECT_EQ(failureOf(browser->pipe(), "A", {.deadline = start + milliseconds(500)}).kind(),
            Case::timedOut);
  const int process = browser->process().number();
  browser.reset();
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(30));
  EXPECT_FALSE(test::isRunning(process));
}

TEST_F(HeadlessBrowserTest, StopsHelpersOfABrowserThatHangs) {
  const test::FakeBrowser fake("hang");
  {
    HeadlessBrowser browser(fake.program());
    failureOf(browser.pipe(), "A", {.deadline = Clock::now() + milliseconds(1500)});
  }
  const int child = fake.number("child");
  for (int i = 0; i < 100 && test::isRunning(child); ++i)
    std::this_thread::sleep_for(milliseconds(20));
  EXPECT_FALSE(test::isRunning(child));
}

TEST_F(HeadlessBrowserTest, StopsWaitingWhenCancelled) {
  class Impatient : public ProgressObserver {
   public:
    void onProgress(std::string_view, double) override {}
    bool isCancelled() override { return ++asked_ > 3; }

   private:
    int asked_ = 0;
  } observer;
  const test::FakeBrowser fake("silent A");
  HeadlessBrowser browser(fake.program());
  EXPECT_THROW(browser.pipe().call({.method = "A"}, {.observer = &observer}), Cancelled);
  EXPECT_NO_THROW(browser.pipe().call({.method = "B"}, forSeconds(60)));
}

TEST_F(HeadlessBrowserTest, GivesTheBrowserAPrivateFolderAndItsOwnGroup) {
  const test::FakeBrowser fake("");
  HeadlessBrowser browser(fake.program());
  browser.pipe().call({.method = "A"}, forSeconds(60));
  const auto& folder = browser.process().folder();
  EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms::owner_all);
  EXPECT_THAT(fake.arguments(), HasSubstr("--user-data-dir=" + folder.string()));
  EXPECT_EQ(fake.arguments().find("--no-sandbox") != std::string::npos, geteuid() == 0);
  EXPECT_EQ(getpgid(browser.process().number()), browser.process().number());
}

TEST_F(HeadlessBrowserTest, LeavesNoOtherDescriptorOpenInTheBrowser) {
  const test::FakeBrowser fake("");
  HeadlessBrowser browser(fake.program());
  browser.pipe().call({.method = "A"}, forSeconds(60));
  const auto own = "/proc/" + std::to_string(browser.process().number()) + "/fd/";
  for (const int number : {0, 1}) {
    EXPECT_EQ(std::filesystem::read_symlink(own + std::to_string(number)), "/dev/null");
  }
  // 5 is the fake's own list of commands.
  for (int number = 6; number < 64; ++number)
    EXPECT_FALSE(std::filesystem::is_symlink(own + std::to_string(number))) << number;
}

TEST_F(HeadlessBrowserTest, WorksInAProcessWithoutStandardStreams) {
  const test::FakeBrowser fake("");
  const auto end = test::runInChild([&] {
    for (int number = 0; number < 6; ++number) close(number);
    HeadlessBrowser browser(fake.program());
    browser.pipe().call({.method = "A"}, forSeconds(60));
    return 0;
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(HeadlessBrowserTest, WorksInAProcessThatIgnoresItsChildren) {
  const test::FakeBrowser fake("");
  const auto end = test::runInChild([&] {
    signal(SIGCHLD, SIG_IGN);
    HeadlessBrowser browser(fake.program());
    browser.pipe().call({.method = "A"}, forSeconds(60));
    return 0;
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(HeadlessBrowserTest, PassesOnWhyAProgramCannotBeStarted) {
  try {
    HeadlessBrowser browser(temporary_.path() / "missing");
    FAIL();
  } catch (const PlatformError& failure) {
    EXPECT_EQ(failure.errorDescription(), "missing: No such file or directory");
  }
  const auto text = temporary_.path() / "text";
  std::ofstream(text) << "no program";
  try {
    HeadlessBrowser browser(text);
    FAIL();
  } catch (const PlatformError& failure) {
    EXPECT_EQ(failure.errorDescription(), "text: Permission denied");
  }
  std::filesystem::remove(text);
}

TEST_F(HeadlessBrowserTest, PassesOnThatTheTemporaryFolderCannotBeWritten) {
  const auto folder = temporary_.path() / "locked";
  std::filesystem::create_directory(folder);
  std::filesystem::permissions(folder, static_cast<std::filesystem::perms>(0555));
  std::filesystem::permissions(temporary_.path(), static_cast<std::filesystem::perms>(0755));
  const auto end = test::runInChild([&] {
    test::becomeNobody();
    setenv("TMPDIR", folder.c_str(), 1);
    try {
      HeadlessBrowser browser("/bin/true");
    } catch (const PlatformError& failure) {
      return failure.errorDescription() == "locked: Permission denied" ? 0 : 1;
    }
    return 2;
  });
  EXPECT_EQ(end.exitCode, 0);
  std::filesystem::remove(folder);
}

TEST_F(HeadlessBrowserTest, PassesOnThatThereIsNoTemporaryFolder) {
  const auto end = test::runInChild([&] {
    setenv("TMPDIR", "/nowhere/at/all", 1);
    try {
      HeadlessBrowser browser("/bin/true");
    } catch (const PlatformError& failure) {
      return failure.code() == std::errc::no_such_file_or_directory ||
                     failure.code() == std::errc::not_a_directory
                 ? 0
                 : 1;
    }
    return 2;
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(HeadlessBrowserTest, HearsOfARealPageThatCrashes) {
  const auto program = BrowserSearch::find(BrowserSearch::programFolders());
  ASSERT_TRUE(program) << "install chromium-headless-shell";
  HeadlessBrowser browser(*program);
  auto reply = browser.pipe().call(
      {.method = "Target.createTarget", .parameters = R"({"url":"about:blank"})"}, forSeconds(60));
  const auto target = DevToolsMessage::stringAt(reply, {"result", "targetId"});
  ASSERT_TRUE(target);
  const auto parameters = R"({"flatten":true,"targetId":)" + DevToolsMessage::quoted(*target) + "}";
  reply = browser.pipe().call({.method = "Target.attachToTarget", .parameters = parameters},
                              forSeconds(60));
  const auto session = DevToolsMessage::stringAt(reply, {"result", "sessionId"});
  ASSERT_TRUE(session);
  browser.pipe().call({.method = "Inspector.enable", .session = *session}, forSeconds(60));
  try {
    browser.pipe().call({.method = "Page.crash", .session = *session}, forSeconds(60));
    FAIL();
  } catch (const BrowserError& failure) {
    EXPECT_EQ(failure, BrowserError(Case::ended, "The browser's page crashed."));
  }
}

}  // namespace
}  // namespace orvane
