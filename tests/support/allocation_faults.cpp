#include "tests/support/allocation_faults.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace orvane::test::AllocationFaults {
namespace {

constexpr const char* kVariable = "ORVANE_TEST_FAILING_ALLOCATION";
constexpr const char* kNoteVariable = "ORVANE_TEST_FAILED_ALLOCATION";
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

std::atomic<std::size_t> failing{kNone};
std::atomic<std::size_t> counted{0};
std::atomic<bool> isAsked{false};

bool fails() {
  if (failing == kNone || counted++ != failing) return false;
  if (const char* const note = std::getenv(kNoteVariable))
    ::close(static_cast<int>(syscall(SYS_openat, AT_FDCWD, note, O_CREAT | O_WRONLY, 0600)));
  return true;
}

void* allocate(std::size_t size) {
  void* const place = fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (place == nullptr) throw std::bad_alloc();
  return place;
}

void* allocate(std::size_t size, std::align_val_t alignment) {
  const auto unit = static_cast<std::size_t>(alignment);
  void* const place = fails() ? nullptr : std::aligned_alloc(unit, (size / unit + 1) * unit);
  if (place == nullptr) throw std::bad_alloc();
  return place;
}

}  // namespace

void begin(std::size_t at) {
  counted = 0;
  failing = at;
}

bool end() {
  return counted > failing.exchange(kNone);
}

void beginAsAsked() {
  const char* const asked = std::getenv(kVariable);
  if (asked != nullptr && !isAsked.exchange(true)) begin(std::strtoul(asked, nullptr, 10));
}

std::vector<std::string> variablesFor(std::size_t at, const std::filesystem::path& library,
                                      const std::filesystem::path& note) {
  return {"LD_PRELOAD=" + library.string(), kVariable + ("=" + std::to_string(at)),
          kNoteVariable + ("=" + note.string())};
}

}  // namespace orvane::test::AllocationFaults

namespace faults = orvane::test::AllocationFaults;

// Libraries find only what is visible.
#pragma GCC visibility push(default)

void* operator new(std::size_t size) {
  return faults::allocate(size);
}
void* operator new[](std::size_t size) {
  return faults::allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return faults::allocate(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return faults::allocate(size, alignment);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return faults::fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return faults::fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* place) noexcept {
  std::free(place);
}
void operator delete[](void* place) noexcept {
  std::free(place);
}
void operator delete(void* place, std::size_t) noexcept {
  std::free(place);
}
void operator delete[](void* place, std::size_t) noexcept {
  std::free(place);
}
void operator delete(void* place, std::align_val_t) noexcept {
  std::free(place);
}
void operator delete[](void* place, std::align_val_t) noexcept {
  std::free(place);
}
void operator delete(void* place, std::size_t, std::align_val_t) noexcept {
  std::free(place);
}
void operator delete[](void* place, std::size_t, std::align_val_t) noexcept {
  std::free(place);
}

#pragma GCC visibility pop
