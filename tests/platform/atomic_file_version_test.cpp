// Replacing one version of a file and no other: what another program saves meanwhile is never lost.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "orvane/platform/atomic_file.h"
#include "tests/support/in_child.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

namespace faults = test::SystemCallFaults;
using faults::Kind;
using test::readFile;
using test::writeFile;

constexpr const char* kChanged = "take.wav: the file was changed by another program meanwhile";

class AtomicFileVersionTest : public testing::Test {
 protected:
  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      result.push_back(entry.path().filename());
    return result;
  }
  /// As most programs save: a file of their own gets the name.
  void saveAsAnother(const std::string& content) const {
    writeFile(elsewhere / "other.wav", content);
    std::filesystem::rename(elsewhere / "other.wav", target);
  }
  /// What `commit` says; empty when all is well. `meanwhile` runs before every call named `call`.
  std::string committed(AtomicFile& file, faults::Plan plan = {}, const std::string& call = {},
                        std::function<void(int)> meanwhile = {}) const {
    plan.meanwhile = [&, count = 0](std::string_view name) mutable {
      if (name == call) meanwhile(count++);
    };
    faults::begin(plan);
    std::string text;
    try {
      file.commit();
    } catch (const PlatformError& error) {
      text = error.errorDescription();
    }
    faults::end();
    return text;
  }
  AtomicFile opened() const {
    AtomicFile file(target, FileStamp::of(target).value());
    file.write("mine");
    return file;
  }

  test::TemporaryDirectory folder;
  test::TemporaryDirectory elsewhere;
  std::filesystem::path target = writeFile(folder / "take.wav", "as it was read");
};

TEST_F(AtomicFileVersionTest, ReplacesTheVersionThatWasRead) {
  for (const bool exchange : {true, false}) {
    auto file = opened();
    EXPECT_EQ(committed(file, {.exchange = exchange}), "");
    EXPECT_EQ(readFile(target), "mine");
    EXPECT_EQ(names(), std::vector<std::string>{"take.wav"});
  }
}

TEST_F(AtomicFileVersionTest, RefusesAtOnceWhatHasChangedSinceItWasRead) {
  const auto stamp = FileStamp::of(target).value();
  saveAsAnother("theirs");
  for (const bool isThere : {true, false}) {
    try {
      AtomicFile file(target, stamp);
      ADD_FAILURE() << "nothing was thrown";
    } catch (const PlatformError& error) {
      EXPECT_EQ(error.errorDescription(), kChanged);
    }
    if (isThere) std::filesystem::remove(target);
  }
  EXPECT_TRUE(names().empty());
}

TEST_F(AtomicFileVersionTest, RefusesWhatChangesBeforeTheCommit) {
  const std::vector<std::function<void()>> changes = {
      [&] { saveAsAnother("theirs"); },
      [&] { writeFile(target, "theirs"); },
      [&] { std::filesystem::remove(target); },
  };
  for (const bool exchange : {true, false}) {
    for (const auto& change : changes) {
      writeFile(target, "as it was read");
      auto file = opened();
      change();
      EXPECT_EQ(committed(file, {.exchange = exchange}), kChanged);
      if (std::filesystem::exists(target)) {
        EXPECT_EQ(readFile(target), "theirs");
      }
      std::filesystem::remove(target);
      EXPECT_TRUE(names().empty());
    }
  }
}

TEST_F(AtomicFileVersionTest, GivesBackWhatChangesInTheLastMoment) {
  // "renameat2" is the exchange itself: the look before it has found nothing.
  auto file = opened();
  EXPECT_EQ(committed(file, {}, "renameat2",
                      [&](int count) {
                        if (count == 0) saveAsAnother("theirs");
                      }),
            kChanged);
  EXPECT_EQ(readFile(target), "theirs");
  EXPECT_EQ(names(), std::vector<std::string>{"take.wav"});

  auto gone = opened();
  EXPECT_EQ(committed(gone, {}, "renameat2", [&](int) { std::filesystem::remove(target); }),
            kChanged);
  EXPECT_TRUE(names().empty());
}

TEST_F(AtomicFileVersionTest, LosesNoneOfTwoSavesThatComeInBetween) {
  // The second comes before the first is put back: that one stays beside the file.
  auto file = opened();
  EXPECT_EQ(committed(file, {}, "renameat2",
                      [&](int count) { saveAsAnother(count == 0 ? "first" : "second"); }),
            kChanged);
  EXPECT_EQ(readFile(target), "first");
  const auto left = abandonedTemporaries(folder.path());
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(readFile(left.front()), "second");
}

/// Saves from a process of its own, which dawdles before it gives the file its name and before it
/// puts anything back. Ends with 0 when it has saved, with 1 when it was told of a change.
pid_t startSaver(const std::filesystem::path& target, const FileStamp& stamp,
                 const std::string& content) {
  return test::startInChild([=] {
    faults::Plan plan;
    plan.meanwhile = [](std::string_view name) {
      if (name == "renameat2") usleep(500);
    };
    faults::begin(plan);
    try {
      AtomicFile file(target, stamp);
      file.write(content);
      file.commit();
      return 0;
    } catch (const PlatformError& error) {
      return error.errorDescription() == kChanged ? 1 : 2;
    }
  });
}

TEST_F(AtomicFileVersionTest, OfSeveralSaversAtOnceOneWinsAndTheOthersAreTold) {
  for (const int savers : {2, 3, 5})
    for (int round = 0; round < 20; ++round) {
      writeFile(target, "as it was read");
      const auto stamp = FileStamp::of(target).value();
      std::vector<pid_t> all;
      for (int i = 0; i < savers; ++i)
        all.push_back(startSaver(target, stamp, "saver " + std::to_string(i)));
      int winner = -1;
      int told = 0;
      for (int i = 0; i < savers; ++i) {
        const int end = test::waitFor(all[static_cast<std::size_t>(i)]).exitCode;
        if (end == 0) winner = i;
        told += end == 1 ? 1 : 0;
      }
      EXPECT_EQ(told, savers - 1);
      EXPECT_EQ(readFile(target), "saver " + std::to_string(winner));
      EXPECT_EQ(names(), std::vector<std::string>{"take.wav"});
    }
}

TEST_F(AtomicFileVersionTest, SaysThatItIsSavedWhenTheChangeCannotBePutBack) {
  auto file = opened();
  const auto text =
      committed(file, {.kind = Kind::failOnce, .at = 1, .code = EIO, .only = "renameat2"},
                "renameat2", [&](int count) {
                  if (count == 0) saveAsAnother("theirs");
                });
  EXPECT_EQ(readFile(target), "mine");
  const auto left = abandonedTemporaries(folder.path());
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(readFile(left.front()), "theirs");
  EXPECT_EQ(text, "take.wav: Saved, but over a change by another program, which is now in \"" +
                      left.front().filename().string() + "\"");
}

TEST_F(AtomicFileVersionTest, SaysThatItIsSavedWhenTheOldVersionCannotBeRemoved) {
  auto file = opened();
  const auto text = committed(file, {.kind = Kind::failFromThen, .code = EIO, .only = "unlinkat"});
  EXPECT_EQ(readFile(target), "mine");
  const auto left = abandonedTemporaries(folder.path());
  ASSERT_EQ(left.size(), 1U);
  EXPECT_EQ(readFile(left.front()), "as it was read");
  EXPECT_EQ(text, "take.wav: Saved, but \"" + left.front().filename().string() +
                      "\" is left beside it (Input/output error)");
}

TEST_F(AtomicFileVersionTest, NamesItsTemporaryAfterTheFile) {
  const auto nameOf = [&](const std::string& file) {
    const auto path = writeFile(folder / file, "old");
    std::string name;
    faults::begin({.anonymous = false});
    {
      AtomicFile temporary(path);
      for (const auto& entry : names())
        if (entry != file && entry != "take.wav") name = entry;
    }
    faults::end();
    std::filesystem::remove(path);
    return name;
  };
  EXPECT_TRUE(std::string_view(nameOf("take1.wav")).starts_with(".take1.orvane-save-"));
  EXPECT_TRUE(std::string_view(nameOf("take1.wav")).ends_with(".wav"));
  EXPECT_EQ(nameOf("take1.wav").size(), std::string(".take1.orvane-save-1A2B3C4D.wav").size());
  EXPECT_NE(nameOf("take1.wav"), nameOf("take1.wav"));
  EXPECT_TRUE(std::string_view(nameOf("a.b.wav")).starts_with(".a.b.orvane-save-"));
  EXPECT_EQ(nameOf("take").size(), std::string(".take.orvane-save-1A2B3C4D").size());

  // The stem is cut where a character ends: 229 bytes fit, of characters of two bytes 228.
  EXPECT_EQ(nameOf(std::string(251, 'x') + ".wav").size(), 255U);
  std::string umlauts;
  for (int i = 0; i < 125; ++i) umlauts += "\xC3\xA4";
  EXPECT_EQ(nameOf(umlauts + ".wav").size(), 254U);
  EXPECT_EQ(nameOf("x." + std::string(253, 'e')).size(), 23U);
}

}  // namespace
}  // namespace orvane
