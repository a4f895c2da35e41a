#pragma once

#include <cstdint>

namespace tambrel {

/// Listens for the moment at which the last notes have rung out. One thread; nothing allocates.
class RingOut {
public:
    explicit RingOut(double sampleRate) : sampleRate_(sampleRate) {}

    void begin() noexcept { frames_ = quietFrames_ = 0; }
    /// To be asked of every block: whether nothing has been heard for a while and no voice is active. True in
    /// any case after ten seconds: some banks have voices that never decay.
    [[nodiscard]] bool isOver(const float* left, const float* right, int frames, int activeVoices) noexcept;

private:
    const double sampleRate_;
    std::int64_t frames_ = 0;
    std::int64_t quietFrames_ = 0;
};

} // namespace tambrel
