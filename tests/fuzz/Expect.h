/// @file
#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the process when the condition does not hold, whatever the build: that is how a fuzzer learns of it.
#define FUZZ_EXPECT(...)                                                                                     \
    do {                                                                                                     \
        if (!(__VA_ARGS__))                                                                                  \
        {                                                                                                    \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #__VA_ARGS__);            \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)
