// check.h -- the rule checks of the fuzz targets: a broken rule prints itself and aborts.
#pragma once

#include <cstdio>
#include <cstdlib>

// Aborts with the rule's text, so that libFuzzer keeps the input as a crash
// and a corpus replay fails with the rule in its output.
#define FUZZ_CHECK(cond, what)                                                    \
  do {                                                                            \
    if (!(cond)) {                                                                \
      std::fprintf(stderr, "broken rule: %s (%s:%d)\n", what, __FILE__, __LINE__); \
      std::abort();                                                               \
    }                                                                             \
  } while (0)
