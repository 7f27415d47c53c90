#include "orvane/text/timed_list.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orvane/text/text_list_error.h"

namespace orvane {
namespace {

/// The entries in one line each: "1: start|end|name", "-" for what is absent.
std::vector<std::string> lines(const std::vector<TimedList::Entry>& entries) {
  std::vector<std::string> result;
  for (const auto& entry : entries)
    result.push_back(std::to_string(entry.line) + ": " + entry.start + "|" +
                     entry.end.value_or("-") + "|" + entry.name.value_or("-"));
  return result;
}

std::vector<std::string> csv(const std::string& text, bool needsEnd = false) {
  std::vector<TimedList::Entry> entries;
  TimedList::readCSV(
      text, {.start = {"start", "time"}, .end = {"end"}, .name = {"name"}, .needsEnd = needsEnd},
      [&](TimedList::Entry entry) { entries.push_back(std::move(entry)); });
  return lines(entries);
}

std::vector<std::string> labels(const std::string& text) {
  std::vector<TimedList::Entry> entries;
  TimedList::readAudacityLabels(
      text, [&](TimedList::Entry entry) { entries.push_back(std::move(entry)); });
  return lines(entries);
}

std::string refusal(const std::string& text, bool needsEnd = false) {
  try {
    csv(text, needsEnd);
  } catch (const TextListError& error) {
    return error.errorDescription();
  }
  return "accepted";
}

using Lines = std::vector<std::string>;

TEST(TimedList, FindsTheColumnsByTheHeader) {
  EXPECT_EQ(csv("\xEF\xBB\xBFName, TIME ,x\r\n\r\n'=a,1,2\r\n,3\r\n\"\",4\r\n"),
            (Lines{"3: 1|-|=a", "4: 3|-|-", "5: 4|-|"}));
}

TEST(TimedList, TakesStartEndAndNameWithoutAHeader) {
  EXPECT_EQ(csv("1,2,name\n3\n"), (Lines{"1: 1|2|name", "2: 3|-|-"}));
}

TEST(TimedList, NamesTheColumnThatTheHeaderLacks) {
  EXPECT_EQ(refusal("end\n1\n"), "Line 1: the header names no column \"start\".");
  EXPECT_EQ(refusal("start\n1\n", true), "Line 1: the header names no column \"end\".");
  EXPECT_EQ(refusal("start\n1\n"), "accepted");
}

TEST(TimedList, GivesTheEntriesBeforeAnError) {
  std::size_t count = 0;
  EXPECT_THROW(TimedList::readCSV("1,2\n\"", {}, [&](const TimedList::Entry&) { ++count; }),
               TextListError);
  EXPECT_EQ(count, 1U);
}

TEST(TimedList, ReadsLabelTracks) {
  EXPECT_EQ(labels("1\t2\ta\tb\r\n\n\\\t100\t200\n3\n4\t\n5\t6\t\n"),
            (Lines{"1: 1|2|a\tb", "4: 3|-|-", "5: 4||-", "6: 5|6|-"}));
}

}  // namespace
}  // namespace orvane
