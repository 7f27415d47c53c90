#include "orvane/platform/highway_dispatch.h"

#if HWY_ARCH_X86
#include <cpuid.h>
#endif

namespace orvane {

#if HWY_ARCH_X86
namespace {

/// Two sets of instructions that not every compiler's `__builtin_cpu_supports` knows.
bool hasHalfFloatsAndLeadingZeros() {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  const bool hasF16C = __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (ecx & bit_F16C) != 0;
  const bool hasLZCNT =
      __get_cpuid(0x80000001, &eax, &ebx, &ecx, &edx) != 0 && (ecx & bit_LZCNT) != 0;
  return hasF16C && hasLZCNT;
}

/// What Highway's headers let the compiler use in a kernel for each set.
std::int64_t detected() {
  __builtin_cpu_init();
  const bool hasSSE4 = __builtin_cpu_supports("ssse3") && __builtin_cpu_supports("sse4.1") &&
                       __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("pclmul") &&
                       __builtin_cpu_supports("aes");
  const bool hasAVX2 = hasSSE4 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
                       __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
                       hasHalfFloatsAndLeadingZeros();
  const bool hasAVX3 = hasAVX2 && __builtin_cpu_supports("avx512f") &&
                       __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                       __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd");
  return (hasSSE4 ? HWY_SSE4 : 0) | (hasAVX2 ? HWY_AVX2 : 0) | (hasAVX3 ? HWY_AVX3 : 0);
}

}  // namespace
#else
namespace {

/// What the whole program is compiled for.
std::int64_t detected() {
  return HWY_STATIC_TARGET;
}

}  // namespace
#endif

hwy::ChosenTarget& chosenInstructionSet() {
  static hwy::ChosenTarget chosen;
  return chosen;
}

std::int64_t supportedInstructionSets() {
  static const std::int64_t supported = detected() | HWY_SCALAR | HWY_EMU128;
  return supported;
}

}  // namespace orvane
