#pragma once

#include <cstdio>
#include <cstdlib>

// An invariant the code under test promises; a broken one is a finding like any crash.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: invariant broken: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
