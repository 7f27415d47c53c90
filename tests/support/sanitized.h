#pragma once

// ORVANE_IS_SANITIZED is defined where a sanitizer's own memory would be mistaken for the program's.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORVANE_IS_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define ORVANE_IS_SANITIZED 1
#endif
#endif
