#pragma once

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace orvane {

/// Lets arithmetic treat numbers too small for full precision as 0 for as long as it lives, on this
/// thread: a decaying filter would otherwise slow down a hundredfold in digital silence.
class ScopedDenormalFlush {
 public:
#if defined(__SSE2__)
  ScopedDenormalFlush() noexcept : saved_(_mm_getcsr()) {
    _mm_setcsr(saved_ | 0x8040U);
  }
  ~ScopedDenormalFlush() {
    _mm_setcsr(saved_);
  }
#elif defined(__aarch64__)
  ScopedDenormalFlush() noexcept {
    asm volatile("mrs %0, fpcr" : "=r"(saved_));
    asm volatile("msr fpcr, %0" ::"r"(saved_ | (1UL << 24)));
  }
  ~ScopedDenormalFlush() {
    asm volatile("msr fpcr, %0" ::"r"(saved_));
  }
#else
  ScopedDenormalFlush() noexcept = default;
  ~ScopedDenormalFlush() {}
#endif
  ScopedDenormalFlush(const ScopedDenormalFlush&) = delete;
  ScopedDenormalFlush& operator=(const ScopedDenormalFlush&) = delete;

#if defined(__SSE2__)
 private:
  unsigned saved_;
#elif defined(__aarch64__)
 private:
  unsigned long saved_ = 0;
#endif
};

}  // namespace orvane
