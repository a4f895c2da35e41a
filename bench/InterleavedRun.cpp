#include "InterleavedRun.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <ctime>
#include <utility>

namespace tambrel::bench {
namespace {

using Seconds = std::vector<double>; // One entry a round.

double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double timed(const Step& step) {
    const double start = processorSeconds();
    step.run();
    return processorSeconds() - start;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    return *middle;
}

// Of speeds in bytes a second, round by round.
double medianRatio(const Step& step, const Seconds& seconds, const Step& first, const Seconds& firstSeconds) {
    const double perByte = static_cast<double>(step.bytes) / static_cast<double>(first.bytes);
    std::vector<double> ratios(seconds.size());
    std::ranges::transform(firstSeconds, seconds, ratios.begin(),
                           [perByte](double base, double own) { return perByte * base / own; });
    return median(std::move(ratios));
}

bool printLine(const Step& step, const Seconds& seconds, double ratio) {
    const double typical = median(seconds);
    std::printf("%-28s %10.3f ms %9.0f MB/s %8.2f", step.name.c_str(), typical * 1e3,
                static_cast<double>(step.bytes) / typical / 1e6, ratio);
    const bool reached = !step.wantedRatio || ratio >= *step.wantedRatio;
    if (step.wantedRatio)
        std::printf("   at least %.2f: %s", *step.wantedRatio, reached ? "yes" : "NO");
    std::printf("\n");
    return reached;
}

} // namespace

bool runInterleaved(const std::vector<Step>& steps, int rounds) {
    assert(!steps.empty() && rounds >= 1);
    std::ranges::for_each(steps, [](const Step& step) { step.run(); }); // Caches and pages warm up.
    std::vector<Seconds> seconds(steps.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < steps.size(); ++i)
            seconds[i].push_back(timed(steps[i]));
    }

    std::printf("%-28s %13s %14s %8s\n", "", "median", "speed", "ratio");
    bool allReached = true;
    for (std::size_t i = 0; i < steps.size(); ++i)
        allReached &= printLine(steps[i], seconds[i],
                                medianRatio(steps[i], seconds[i], steps.front(), seconds.front()));
    return allReached;
}

} // namespace tambrel::bench
