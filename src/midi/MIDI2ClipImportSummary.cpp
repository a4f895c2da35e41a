#include "MIDI2ClipImportSummary.h"

#include <sstream>
#include <string_view>

namespace tambrel {

std::string MIDI2ClipImportSummary::debugDescription() const {
    std::ostringstream text;
    text << "packets " << totalPackets << "; imported " << importedPackets << "; MIDI1 UMP "
         << midi1ChannelVoicePackets << "; MIDI2 down-converted " << midi2ChannelVoiceDownConverted << "/"
         << midi2ChannelVoicePackets << "; flex tempo " << flexTempoPackets << "; flex time "
         << flexTimeSignaturePackets << "; unsupported " << unsupportedPackets << "; tracks " << trackCount
         << "; tpq " << ticksPerQuarterNote << "; groups ";
    std::string_view separator;
    for (const auto& [group, channels] : channelsByGroup) {
        text << separator << "G" << group + 1 << "[";
        std::string_view comma;
        for (const std::uint8_t channel : channels) {
            text << comma << channel + 1;
            comma = ",";
        }
        text << "]";
        separator = " ";
    }
    return text.str();
}

} // namespace tambrel
