#include "ParameterEntry.h"

namespace tambrel {
namespace {

// SoundFont 2.01, 9.6: 100, 101 and 102 add hundreds, thousands and ten thousands to a generator's number.
// There are fewer than a hundred generators.
constexpr bool isPartOfALargeNumber(std::uint8_t lsb) {
    return lsb >= 100 && lsb <= 102;
}
constexpr std::uint8_t noGenerator = 103;

} // namespace

std::optional<ParameterValue> ParameterEntry::apply(std::uint8_t controller, std::uint8_t value) {
    using namespace Controller;
    if (controller == dataEntryMSB || controller == dataEntryLSB) {
        (controller == dataEntryMSB ? dataMSB_ : dataLSB_) = value;
        if (!dataMSB_)
            return std::nullopt;
        return ParameterValue{isRegistered_ ? registered_ : nonRegistered_, *dataMSB_, dataLSB_.value_or(0)};
    }
    isRegistered_ = controller == registeredMSB || controller == registeredLSB;
    dataMSB_ = dataLSB_ = std::nullopt;
    if (controller == registeredMSB)
        registered_.msb = value;
    else if (controller == registeredLSB)
        registered_.lsb = value;
    else if (controller == nonRegisteredMSB)
        nonRegistered_ = {.isRegistered = false, .msb = value, .lsb = 0};
    else if (nonRegistered_.isGenerator() && isPartOfALargeNumber(nonRegistered_.lsb) && value < 100)
        nonRegistered_.lsb = noGenerator;
    else
        nonRegistered_.lsb = value;
    return std::nullopt;
}

} // namespace tambrel
