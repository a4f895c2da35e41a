#pragma once

#include <array>
#include <cstdint>

namespace tambrel {

/// Which channel each of the sixteen parts receives: at first, and after a reset, that of its own number. One
/// thread at a time; nothing fails.
class PartRouter {
public:
    static constexpr std::uint8_t parts = 16;
    static constexpr std::uint8_t noChannel = 16;

    /// True while every part receives its own channel, and no other part does.
    [[nodiscard]] bool isUsual() const { return channels_ == usual(); }
    [[nodiscard]] bool receives(std::uint8_t part, std::uint8_t channel) const {
        return channels_[part] == channel;
    }
    /// Returns false where the part does so already.
    bool setChannel(std::uint8_t part, std::uint8_t channel) {
        const bool isOther = channels_[part] != channel;
        channels_[part] = channel;
        return isOther;
    }

private:
    using Channels = std::array<std::uint8_t, parts>;
    static constexpr Channels usual() {
        Channels channels{};
        for (std::uint8_t part = 0; part < parts; ++part)
            channels[part] = part;
        return channels;
    }

    Channels channels_ = usual();
};

} // namespace tambrel
