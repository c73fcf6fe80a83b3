// SPDX-License-Identifier: MIT
#pragma once
// Processor features behind the vector fast paths, asked once per process. KX_X86_VECTORS is
// defined where the x86 intrinsics and the run-time checks are available.

#if defined(__x86_64__) || defined(__i386__)
#define KX_X86_VECTORS 1
#include <immintrin.h>

namespace kx::detail {

inline bool CpuHasSsse3() {
  static const bool Has = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("ssse3") != 0;
  }();
  return Has;
}

inline bool CpuHasAvx2() {
  static const bool Has = [] {
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
  }();
  return Has;
}

} // namespace kx::detail
#endif
