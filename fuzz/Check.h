#pragma once

#include <cstdlib>

namespace tambrel::fuzz {

/// Aborts when a promise is not kept; the fuzzer then reports the input.
inline void check(bool promiseKept) {
    if (!promiseKept)
        std::abort();
}

} // namespace tambrel::fuzz
