#include "LoudnessMeter.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <new>

namespace tambrel {

namespace {
constexpr unsigned channels = 2;
}

struct LoudnessMeter::State {
    explicit State(int framesPerSecond)
        : handle(ebur128_init(channels, static_cast<unsigned long>(framesPerSecond),
                              EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK)) {
        if (handle == nullptr)
            throw std::bad_alloc();
    }
    ~State() { ebur128_destroy(&handle); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    ebur128_state* handle;
};

LoudnessMeter::LoudnessMeter(int framesPerSecond) : state_(std::make_unique<State>(framesPerSecond)) {}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(std::span<const float> samples) {
    if (ebur128_add_frames_float(state_->handle, samples.data(), samples.size() / channels) !=
        EBUR128_SUCCESS)
        throw std::bad_alloc(); // Nothing else can go wrong.
}

double LoudnessMeter::gainTo(double loudness) const {
    constexpr double decibelsPerDecade = 20;
    constexpr double highestPeak = -1;
    double measured = 0;
    if (ebur128_loudness_global(state_->handle, &measured) != EBUR128_SUCCESS || !std::isfinite(measured))
        return 1;
    double peak = 0;
    for (unsigned channel = 0; channel < channels; ++channel) {
        double ofChannel = 0;
        ebur128_true_peak(state_->handle, channel, &ofChannel);
        peak = std::max(peak, ofChannel);
    }
    return std::min(std::pow(10, (loudness - measured) / decibelsPerDecade),
                    std::pow(10, highestPeak / decibelsPerDecade) / peak);
}

} // namespace tambrel
