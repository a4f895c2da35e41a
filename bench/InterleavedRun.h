#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tambrel::bench {

/// One measured function. `wantedRatio` is the least speed it must reach, as a multiple of the speed of the
/// first step of its list.
struct Step {
    std::string name;
    std::size_t bytes = 0; ///< Bytes that one run works through.
    std::function<void()> run;
    std::optional<double> wantedRatio = {};
};

/// Keeps a result that nobody reads from being optimized away.
template<class Value>
void keep(const Value& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

/// Runs all steps one after another, `rounds` times (at least 1), and prints one line a step: the median
/// processor time of the whole process, the speed, and the median of the ratios to the first step's speed of
/// the same round. Steps that take turns are slowed alike by other work of the machine. Returns false when a
/// step missed its wanted ratio.
bool runInterleaved(const std::vector<Step>& steps, int rounds);

} // namespace tambrel::bench
