#include "tests/support/faulty_saving.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <sstream>
#include <utility>

#include "orvane/platform/atomic_file.h"
#include "orvane/platform/error.h"
#include "tests/support/allocation_faults.h"
#include "tests/support/in_child.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane::test {
namespace {

namespace faults = SystemCallFaults;
using faults::Kind;

std::optional<std::string> contentOf(const std::filesystem::path& path) {
  if (!std::filesystem::exists(path)) return std::nullopt;
  return readFile(path);
}

std::vector<std::filesystem::path> entriesOf(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> entries;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    entries.push_back(entry.path());
  return entries;
}

std::string described(const faults::Plan& plan) {
  std::ostringstream text;
  text << "kind " << static_cast<int>(plan.kind) << " at call " << plan.at << " code " << plan.code
       << (plan.anonymous ? "" : ", named") << (plan.exchange ? "" : ", no exchange");
  return text.str();
}

}  // namespace

FaultySaving::FaultySaving(std::filesystem::path target, Save save)
    : target_(std::move(target)), save_(std::move(save)), old_(contentOf(target_)) {
  present_ = entriesOf(target_.parent_path());
  if (!old_) present_.push_back(target_);
  const auto undisturbed = attempt({});
  EXPECT_TRUE(undisturbed.isSaid) << undisturbed.error;
  new_ = contentOf(target_).value_or("");
  EXPECT_NE(old_, new_);
}

void FaultySaving::putBack() const {
  for (const auto& path : leftovers()) std::filesystem::remove(path);
  if (contentOf(target_) == old_) return;
  if (old_) {
    writeFile(target_, *old_);
  } else {
    std::filesystem::remove(target_);
  }
}

SaveAttempt FaultySaving::attempt(const Plan& plan, std::optional<std::size_t> allocation) const {
  putBack();
  return save_(plan, allocation);
}

bool FaultySaving::isReached(const SaveAttempt& attempt, std::size_t at) const {
  return attempt.isKilled || attempt.calls.size() > at;
}

std::vector<std::filesystem::path> FaultySaving::leftovers() const {
  auto entries = entriesOf(target_.parent_path());
  std::erase_if(entries, [&](const auto& path) { return std::ranges::count(present_, path) > 0; });
  return entries;
}

void FaultySaving::checkContent(const SaveAttempt& attempt) const {
  const auto content = contentOf(target_);
  const bool isNew = content == new_;
  EXPECT_TRUE(isNew || content == old_) << "neither the old nor the new content";
  if (attempt.isKilled) return;
  if (attempt.isSaid) {
    EXPECT_TRUE(isNew) << "said to be saved";
  } else {
    EXPECT_FALSE(attempt.error.empty());
    EXPECT_EQ(isNew, attempt.error.find("Saved, but") != std::string::npos) << attempt.error;
  }
}

void FaultySaving::failEveryCall(std::initializer_list<int> codes, Plan base) const {
  for (const Kind kind : {Kind::failOnce, Kind::failFromThen}) {
    for (const int code : codes) {
      if (kind == Kind::failFromThen && code == EINTR) continue;
      base.kind = kind;
      base.code = code;
      bool isOver = false;
      for (base.at = 0; !isOver; ++base.at) {
        SCOPED_TRACE(described(base));
        const auto done = attempt(base);
        isOver = !isReached(done, base.at);
        checkContent(done);
        // Only where removing fails as well can something stay.
        EXPECT_LE(leftovers().size(), kind == Kind::failOnce ? 0U : 1U);
      }
    }
  }
}

void FaultySaving::disturbEveryWrite(Plan base) const {
  for (const Kind kind : {Kind::shorten, Kind::interrupt}) {
    base.kind = kind;
    bool isOver = false;
    for (base.at = 0; !isOver; ++base.at) {
      SCOPED_TRACE(described(base));
      const auto done = attempt(base);
      isOver = !isReached(done, base.at);
      EXPECT_TRUE(done.isSaid) << done.error;
      checkContent(done);
    }
  }
}

void FaultySaving::killAtEveryCall(Plan base) const {
  base.kind = Kind::kill;
  std::size_t kills = 0;
  bool isOver = false;
  for (base.at = 0; !isOver; ++base.at) {
    SCOPED_TRACE(described(base));
    const auto done = attempt(base);
    isOver = !done.isKilled;
    kills += done.isKilled ? 1 : 0;
    checkContent(done);
    const auto left = leftovers();
    EXPECT_LE(left.size(), isOver ? 0U : 1U);
    EXPECT_EQ(abandonedTemporaries(target_.parent_path()), left);
  }
  EXPECT_GT(kills, 5U);
}

void FaultySaving::terminateAtEveryCall(const std::string& held, Plan base) const {
  const auto calls = attempt(base).calls;
  const auto firstHeld = static_cast<std::size_t>(std::ranges::find(calls, held) - calls.begin());
  ASSERT_LT(firstHeld, calls.size()) << held << " is not called";
  base.kind = Kind::terminate;
  for (base.at = firstHeld; base.at < calls.size(); ++base.at) {
    SCOPED_TRACE(described(base) + ", " + calls[base.at]);
    const auto done = attempt(base);
    EXPECT_TRUE(done.isKilled);
    EXPECT_EQ(contentOf(target_), new_);
    EXPECT_TRUE(leftovers().empty());
  }
}

void FaultySaving::failAllocations(std::size_t step) const {
  for (std::size_t at = 0;; at += step) {
    SCOPED_TRACE("allocation " + std::to_string(at));
    const auto done = attempt({}, at);
    if (!done.hasLackedMemory) {
      EXPECT_TRUE(done.isSaid) << done.error;
      EXPECT_GT(at, 20U);
      return;
    }
    const auto content = contentOf(target_);
    const bool isNew = content == new_;
    EXPECT_TRUE(isNew || content == old_) << "neither the old nor the new content";
    EXPECT_TRUE(isNew || !done.isSaid) << "said to be saved";
    EXPECT_TRUE(done.isSaid || !done.error.empty());
    EXPECT_FALSE(done.isKilled);
    if (isNew) {
      EXPECT_EQ(done.error.find("unchanged"), std::string::npos) << done.error;
    }
    EXPECT_TRUE(leftovers().empty());
  }
}

FaultySaving::Save FaultySaving::ofOperation(std::function<void()> operation) {
  return
      [operation = std::move(operation)](const Plan& plan, std::optional<std::size_t> allocation) {
        SaveAttempt result;
        if (plan.kind == Kind::kill || plan.kind == Kind::terminate) {
          const auto end = runInChild([&] {
            faults::begin(plan);
            operation();
            return 0;
          });
          result.isKilled = end.signal == SIGKILL || end.signal == SIGTERM;
          result.isSaid = end.exitCode == 0;
          if (!result.isSaid) result.error = "exit code " + std::to_string(end.exitCode);
          return result;
        }
        faults::begin(plan);
        if (allocation) AllocationFaults::begin(*allocation);
        try {
          operation();
          result.isSaid = true;
        } catch (const Error& error) {
          result.error = error.errorDescription();
        } catch (const std::bad_alloc&) {
          result.error = "not enough memory";
        }
        result.hasLackedMemory = AllocationFaults::end();
        result.calls = faults::end();
        return result;
      };
}

FaultySaving::Save FaultySaving::ofProgram(std::filesystem::path program, ProgramSetup setup,
                                           std::filesystem::path library) {
  return [=](const Plan& plan, std::optional<std::size_t> allocation) {
    const TemporaryDirectory folder;
    const auto log = folder / "calls";
    auto disturbed = setup;
    const auto note = folder / "failed";
    for (auto& variable : allocation ? AllocationFaults::variablesFor(*allocation, library, note)
                                     : faults::variablesFor(plan, library, log))
      disturbed.environment.push_back(std::move(variable));
    const ProgramEnd end = runProgram(program, disturbed);
    SaveAttempt result;
    result.isKilled = end.signal == SIGKILL || end.signal == SIGTERM;
    result.isSaid = end.exitCode == 0;
    result.error = end.errors;
    result.hasLackedMemory = std::filesystem::exists(note);
    if (allocation) {
      result.isKilled = end.signal != 0;
      return result;
    }
    std::istringstream lines(readFile(log));
    for (std::string line; std::getline(lines, line);) result.calls.push_back(line);
    return result;
  };
}

}  // namespace orvane::test
