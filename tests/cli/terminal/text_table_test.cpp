#include "cli/terminal/text_table.h"

#include <gtest/gtest.h>

namespace orvane::cli {
namespace {

TEST(TextTable, AlignsColumnsAndLeavesNoSpacesAtLineEnds) {
  const Console console(ConsoleTraits{});
  TextTable table({{"Name"}, {"Level", TextTable::Alignment::right}, {"Note"}}, 1);
  table.addRow({{"a"}, {"-1.50"}, {"x"}});
  table.addRow({{"longer"}, {"-10.25"}});
  EXPECT_EQ(table.text(console),
            " Name     Level  Note\n"
            " a        -1.50  x\n"
            " longer  -10.25\n");
}

TEST(TextTable, HasNoTitleLineWithoutTitles) {
  const Console console(ConsoleTraits{});
  TextTable table({{}, {"", TextTable::Alignment::right, 4}});
  table.addRow({{"a"}, {"1"}});
  table.addRow({{"bb"}, {"22"}});
  EXPECT_EQ(table.text(console), "a      1\nbb    22\n");
}

TEST(TextTable, CountsColumnsNotBytes) {
  const Console console(ConsoleTraits{});
  TextTable table({{"Name"}, {"X"}});
  table.addRow({{"音楽"}, {"1"}});
  table.addRow({{"Ünï"}, {"2"}});
  EXPECT_EQ(table.text(console), "Name  X\n音楽  1\nÜnï   2\n");
}

TEST(TextTable, StylesCellsOnlyWhereColoursAreWanted) {
  ConsoleTraits colourful;
  colourful.isOutputTerminal = true;
  colourful.allowsColour = true;
  TextTable table(std::vector<TextTable::Column>(2));
  table.addRow({{"a", Style::red}, {"b"}});
  const Console console(colourful);
  EXPECT_EQ(table.text(console), "\x1B[31ma\x1B[0m  b\n");
  const Console plain(ConsoleTraits{});
  EXPECT_EQ(table.text(plain), "a  b\n");
}

// Tables of long names ran over the edge of the terminal.
TEST(TextTable, GivesWayOnANarrowTerminal) {
  ConsoleTraits traits;
  traits.isOutputTerminal = true;
  traits.outputColumns = 30;
  TextTable table({{"Name"},
                   {"Asks for", TextTable::Alignment::left, 2, true},
                   {"N", TextTable::Alignment::right}});
  table.addRow({{"a name of many letters"}, {"loud and clear, always"}, {"12345"}});
  EXPECT_EQ(table.text(Console(traits)),
            "Name        Asks for         N\n"
            "a na…tters  loud and     12345\n"
            "            clear,\n"
            "            always\n");
  traits.outputColumns = 200;
  EXPECT_EQ(table.text(Console(traits)),
            "Name                    Asks for                    N\n"
            "a name of many letters  loud and clear, always  12345\n");
  EXPECT_EQ(table.text(Console(ConsoleTraits{})), table.text(Console(traits)));
}

}  // namespace
}  // namespace orvane::cli
