#include "AudioDrivers.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <stop_token>
#include <thread>

namespace tambrel {
namespace {

class SilentDriver final : public AudioDriver {
public:
    SilentDriver(double sampleRate, AudioSource& source)
        : thread_([sampleRate, &source](const std::stop_token& stop) { run(stop, sampleRate, source); }) {}

    [[nodiscard]] std::string name() const override { return std::string(silentDriverName); }

private:
    static void run(const std::stop_token& stop, double sampleRate, AudioSource& source) {
        using Clock = std::chrono::steady_clock;
        constexpr int period = 1024;
        std::array<float, period> left{};
        std::array<float, period> right{};
        const auto length =
            std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(period / sampleRate));
        for (auto due = Clock::now(); !stop.stop_requested(); due += length) {
            std::this_thread::sleep_until(due);
            source.renderAudio(left.data(), right.data(), period);
            due = std::max(due, Clock::now() - length); // After a suspension, go on; do not catch up.
        }
    }

    std::jthread thread_;
};

} // namespace

std::unique_ptr<AudioDriver> openSilentDriver(double sampleRate, AudioSource& source) {
    return std::make_unique<SilentDriver>(sampleRate, source);
}

} // namespace tambrel
