#include "cli/terminal/help_formatter.h"

#include <gtest/gtest.h>

#include <memory>

namespace orvane::cli {
namespace {

TEST(HelpFormatter, ShowsUsageThenPurposeThenOptionsByGroup) {
  CLI::App program("Does things.", "thing");
  program.formatter(std::make_shared<HelpFormatter>());
  program.get_help_ptr()->description("Print this help");
  std::vector<std::string> files;
  int count = 0;
  program.add_option("FILE", files, "Files");
  program.add_option("--count", count, "How many")->option_text("N")->group("Input");
  bool flag = false;
  program.add_flag("--a-rather-long-name-of-a-flag", flag, "What it does");
  EXPECT_EQ(program.help(),
            "Usage: thing [OPTION]… FILE…\n"
            "\n"
            "Does things.\n"
            "\n"
            "Input:\n"
            "  --count N             How many\n"
            "\n"
            "Options:\n"
            "  -h,--help             Print this help\n"
            "  --a-rather-long-name-of-a-flag\n"
            "                        What it does\n");
}

TEST(HelpFormatter, ListsCommands) {
  CLI::App program("Does things.", "thing");
  program.formatter(std::make_shared<HelpFormatter>());
  program.add_subcommand("begin", "Begins");
  program.footer("See also the rest.");
  const std::string help = program.help();
  EXPECT_EQ(help.find("Usage: thing COMMAND [OPTION]…\n"), 0U);
  EXPECT_NE(help.find("\nCommands:\n  begin                 Begins\n"), std::string::npos);
  EXPECT_NE(help.find("\n\nSee also the rest.\n"), std::string::npos);
}

}  // namespace
}  // namespace orvane::cli
