#pragma once

#include <cstdlib>

namespace tambrel::fuzz {

/// Ends the program, which the fuzzer then reports with its input, when a promise is not kept.
inline void check(bool promiseKept) {
    if (!promiseKept)
        std::abort();
}

} // namespace tambrel::fuzz
