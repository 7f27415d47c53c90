#include "cli/terminal/console.h"

#include <gtest/gtest.h>
#include <stdlib.h>

namespace orvane::cli {
namespace {

ConsoleTraits traitsWith(const char* term, const char* noColour) {
  term ? setenv("TERM", term, 1) : unsetenv("TERM");
  noColour ? setenv("NO_COLOR", noColour, 1) : unsetenv("NO_COLOR");
  return ConsoleTraits::ofProcess();
}

TEST(Console, AllowsColoursOnAnOrdinaryTerminal) {
  EXPECT_TRUE(traitsWith("xterm-256color", nullptr).allowsColour);
  EXPECT_TRUE(traitsWith("xterm-256color", "").allowsColour);  // set but empty does not count
}

TEST(Console, HonoursNoColorAndDumbTerminals) {
  EXPECT_FALSE(traitsWith("xterm-256color", "1").allowsColour);
  EXPECT_TRUE(traitsWith("xterm-256color", "1").canRewriteLines);
  EXPECT_FALSE(traitsWith("dumb", nullptr).allowsColour);
  EXPECT_FALSE(traitsWith("dumb", nullptr).canRewriteLines);
  EXPECT_FALSE(traitsWith(nullptr, nullptr).canRewriteLines);
}

TEST(Console, StylesNothingThatDoesNotGoToATerminal) {
  ConsoleTraits traits;
  traits.allowsColour = true;
  EXPECT_EQ(Console(traits).styled(Style::red, "x"), "x");
  traits.isOutputTerminal = true;
  EXPECT_EQ(Console(traits).styled(Style::red, "x"), "\x1B[31mx\x1B[0m");
  EXPECT_EQ(Console(traits).styled(Style::plain, "x"), "x");
  EXPECT_EQ(Console(traits).styled(Style::bold, ""), "");
}

TEST(Console, PrefixesAndEscapesErrors) {
  Console console(ConsoleTraits{});
  testing::internal::CaptureStderr();
  console.error("a\nb\x1B[2J.wav: no such file");
  console.warning("odd");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "orvane: a\\nb\\x1B[2J.wav: no such file\norvane: warning: odd\n");
}

TEST(Console, ShowsAStatusOnlyOnATerminal) {
  Console silent(ConsoleTraits{});
  testing::internal::CaptureStderr();
  silent.status("working");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

  ConsoleTraits traits;
  traits.isErrorTerminal = true;
  traits.canRewriteLines = true;
  traits.columns = 12;
  Console console(traits);
  testing::internal::CaptureStderr();
  console.status("a line that is too long");
  console.error("stop");
  console.status("");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\ra lin… long\x1B[K"
            "\r\x1B[K"
            "orvane: stop\n");
}

}  // namespace
}  // namespace orvane::cli
