#pragma once

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/program_run.h"
#include "tests/support/system_call_faults.h"

namespace orvane::test {

/// What a save said of itself.
struct SaveAttempt {
  bool isSaid = false;               ///< that it has saved
  bool isKilled = false;             ///< it could say nothing more
  std::string error{};               ///< what it said else
  std::vector<std::string> calls{};  ///< the file-system calls that it made
  bool hasLackedMemory = false;      ///< the allocation that was to fail has failed
};

/// Puts a way of saving through every fault in turn, and looks each time: what stands under the
/// name is the old or the new content, whole; what is said of it is true; nothing is left beside
/// it. Failures are those of GoogleTest.
class FaultySaving {
 public:
  using Plan = SystemCallFaults::Plan;
  /// Saves once under the plan, or with that allocation failing; always the same.
  using Save = std::function<SaveAttempt(const Plan&, std::optional<std::size_t> allocation)>;

  /// `target` may stand there or not: as it is now it is before each attempt.
  FaultySaving(std::filesystem::path target, Save save);

  /// Each call fails by each of the codes: that one alone, and it with all later ones. EINTR only
  /// alone.
  void failEveryCall(std::initializer_list<int> codes, Plan base = {}) const;
  /// Each write takes one byte, or is interrupted; the save goes on.
  void disturbEveryWrite(Plan base = {}) const;
  /// The process dies before each call. At most one temporary stays, and it is known for one.
  void killAtEveryCall(Plan base = {}) const;
  /// The process gets SIGTERM before each call; from `held` on it must first complete its work.
  void terminateAtEveryCall(const std::string& held, Plan base = {}) const;

  /// Allocations fail, every `step`th in turn, up to the last one.
  void failAllocations(std::size_t step = 1) const;

  /// The content that a save without faults has made.
  const std::string& saved() const noexcept { return new_; }

  /// Of something in this process that throws; with the faults that end a process in a child.
  static Save ofOperation(std::function<void()> operation);
  /// Of a program, whose exit code 0 says that it has saved, and which is given the faults by
  /// `library`.
  static Save ofProgram(std::filesystem::path program, ProgramSetup setup,
                        std::filesystem::path library);

 private:
  void putBack() const;
  SaveAttempt attempt(const Plan& plan, std::optional<std::size_t> allocation = {}) const;
  bool isReached(const SaveAttempt& attempt, std::size_t at) const;
  void checkContent(const SaveAttempt& attempt) const;
  std::vector<std::filesystem::path> leftovers() const;

  std::filesystem::path target_;
  Save save_;
  std::optional<std::string> old_{};
  std::string new_{};
  std::vector<std::filesystem::path> present_{};
};

}  // namespace orvane::test
