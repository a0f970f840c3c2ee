// avx512_intrinsics.h -- <immintrin.h> for the AVX-512 kernels, without GCC 12's false warnings.
#pragma once

// GCC 12 takes the undefined vectors inside some AVX-512 intrinsics for
// uninitialized ones.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
