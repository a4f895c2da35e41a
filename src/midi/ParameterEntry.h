#pragma once

#include "MIDIMessage.h"

#include <cstdint>
#include <optional>

namespace tambrel {

/// A registered or non-registered parameter of a channel.
struct ChannelParameter {
    bool isRegistered = true;
    std::uint8_t msb = 127; ///< 127, 127: no parameter at all.
    std::uint8_t lsb = 127;

    /// Whether the low half names a generator of the sound bank (SoundFont 2.01, 9.6).
    [[nodiscard]] constexpr bool isGenerator() const { return !isRegistered && msb == 120; }

    bool operator==(const ChannelParameter&) const = default;
};

/// What a parameter has been set to, in two halves of seven bits.
struct ParameterValue {
    ChannelParameter parameter;
    std::uint8_t msb = 0;
    std::uint8_t lsb = 0;
};

/// The selected parameter of one channel, and the data entered for it. A new selection forgets the data. The
/// low half alone sets nothing; it may come before the high half or after it. One thread at a time; nothing
/// allocates or fails.
class ParameterEntry {
public:
    /// True of the six controllers that select parameters and enter data.
    [[nodiscard]] static constexpr bool takes(std::uint8_t controller) {
        return controller == Controller::dataEntryMSB || controller == Controller::dataEntryLSB ||
               (controller >= Controller::nonRegisteredLSB && controller <= Controller::registeredMSB);
    }

    /// Takes one of the six. Returns the value that it sets, if any.
    std::optional<ParameterValue> apply(std::uint8_t controller, std::uint8_t value);

    /// Calls `send(controller, value)` for the controllers that turn any other entry into this one.
    template<class Send>
    void restore(Send send) const {
        using namespace Controller;
        const auto select = [&](const ChannelParameter& parameter) {
            send(parameter.isRegistered ? registeredMSB : nonRegisteredMSB, parameter.msb);
            send(parameter.isRegistered ? registeredLSB : nonRegisteredLSB, parameter.lsb);
        };
        select(isRegistered_ ? nonRegistered_ : registered_);
        select(isRegistered_ ? registered_ : nonRegistered_);
        if (dataLSB_)
            send(dataEntryLSB, *dataLSB_);
        if (dataMSB_)
            send(dataEntryMSB, *dataMSB_);
    }

    bool operator==(const ParameterEntry&) const = default;

private:
    ChannelParameter registered_{.isRegistered = true};
    ChannelParameter nonRegistered_{.isRegistered = false};
    bool isRegistered_ = true; // The one that is selected.
    std::optional<std::uint8_t> dataMSB_, dataLSB_;
};

} // namespace tambrel
