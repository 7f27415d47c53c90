#include <gtest/gtest.h>

#include "orvane/report/pdf/browser/devtools_pipe.h"

namespace orvane {
namespace {

TEST(LastWords, AreTheLastPlainLine) {
  EXPECT_EQ(lastWords("first\nsecond\n\n"), "second");
  EXPECT_EQ(lastWords("Remote debugging pipe file descriptors are not open."),
            "Remote debugging pipe file descriptors are not open.");
}

TEST(LastWords, PassOverRoutineLogLinesAndStackTraces) {
  EXPECT_EQ(lastWords("[1121/124313.2:ERROR:dbus/bus.cc:405] Failed to connect\n"
                      "[1121/124313.2:WARNING:media/x.cc:1] drm\n#0 0x5581\n  [end]\n"),
            "");
}

TEST(LastWords, PreferAFatalErrorToEverything) {
  EXPECT_EQ(lastWords("[9/1.2:FATAL:zygote_host_impl_linux.cc(127)] No usable sandbox! Update\n"
                      "#0 0x55d0 base::debug::StackTrace()\nReceived signal 6\n"),
            "No usable sandbox! Update");
}

TEST(LastWords, KeepAComplaintAboutTheSandbox) {
  EXPECT_EQ(lastWords("[9/1.2:ERROR:zygote.cc:101] Running as root without --no-sandbox is not "
                      "supported.\n[9/1.3:ERROR:dbus/bus.cc:405] Failed\n"),
            "Running as root without --no-sandbox is not supported.");
}

TEST(LastWords, AreShownSafely) {
  EXPECT_EQ(lastWords("a\x1b[31mb\r\n"), "a [31mb");
  EXPECT_EQ(lastWords("caf\xC3\n"), "caf\xEF\xBF\xBD");
  EXPECT_EQ(lastWords(std::string(5000, 'x')), std::string(300, 'x'));
  EXPECT_EQ(lastWords(""), "");
}

}  // namespace
}  // namespace orvane
