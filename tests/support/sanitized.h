#pragma once

extern "C" {
[[gnu::weak]] void __asan_init();
[[gnu::weak]] void __tsan_init();
}

namespace orvane::test {

/// Whether a sanitizer runs along: its own memory would be mistaken for the program's, and all
/// takes its time.
inline bool isSanitized() {
  return __asan_init != nullptr || __tsan_init != nullptr;
}

}  // namespace orvane::test
