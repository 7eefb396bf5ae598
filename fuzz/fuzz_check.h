// A property that fails stops the fuzzer with the input that broke it.
#ifndef OVO_FUZZ_FUZZ_CHECK_H
#define OVO_FUZZ_FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition)                                                                                        \
    do {                                                                                                             \
        if (!(condition)) {                                                                                          \
            std::fprintf(stderr, "property failed: %s (%s:%d)\n", #condition, __FILE__, __LINE__);                  \
            std::abort();                                                                                            \
        }                                                                                                            \
    } while (false)

#endif
