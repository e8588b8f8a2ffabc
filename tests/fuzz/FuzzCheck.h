#pragma once

#include <cstdio>
#include <cstdlib>

// A broken promise of the code under test: reported and turned into a crash, which is what a
// fuzzer looks for.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                   \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
